#pragma once

#include <cstddef>
#include <filesystem>
#include <string>

namespace velmora {

/// What reading a small file that someone else may have planted found.
struct CappedRead {
    enum class Kind {
        ok,          ///< `text` holds the whole file
        missing,     ///< nothing at the path
        refused,     ///< a symbolic link, a FIFO, a device, a directory or larger than the cap
        unreadable,  ///< it exists but could not be opened or read
    };
    Kind kind = Kind::missing;
    std::string text;
    /// Why it was refused or unreadable, e.g. "is a symbolic link", "is larger than 65536
    /// bytes"; empty otherwise.
    std::string problem;
};

/// Reads `path` when it is a regular file of at most `cap` bytes. Never follows a symbolic
/// link and never blocks on a FIFO or a device, so a planted file cannot hang or exhaust the
/// program; reads at most `cap` + 1 bytes whatever the file claims its size is.
CappedRead readCappedRegularFile(const std::filesystem::path& path, std::size_t cap);

}  // namespace velmora
