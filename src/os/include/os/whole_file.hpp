#pragma once

#include <filesystem>
#include <optional>
#include <string>
#include <string_view>

namespace velmora {

/// The whole contents of a file in one open/read/close, or nothing when it cannot be opened
/// or read (missing, a directory, no permission, an I/O error).
std::optional<std::string> readWholeFile(const std::filesystem::path& path);

/// Writes every byte of `bytes` to `fd`, retrying short writes and interruptions.
/// Returns 0, or the errno of the write that failed.
int writeAll(int fd, std::string_view bytes);

}  // namespace velmora
