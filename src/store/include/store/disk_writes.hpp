#pragma once

#include "store/store_error.hpp"

#include <filesystem>
#include <string_view>

// The write side shared by the two stores and the log.
namespace velmora {

/// mkdir -p, the last directory private to the user (0700) when it is created here; nothing
/// to do for an empty path (the current directory) or a directory that exists.
WriteError createDirectories(const std::filesystem::path& dir);

/// replaceFile (os/replace_file.hpp) with a file private to the user, flushed to the storage
/// device with its folder, so that a crash, a kill or a power cut at any moment leaves either
/// the old or the new contents; its failure in the store's words.
WriteError replaceFileAtomically(const std::filesystem::path& target, std::string_view bytes);

/// Removes the temporary files of the settings and the marker that a killed process left in
/// `dir`; those of a process that is still running are left alone. Returns how many were
/// removed.
int removeStrayTemporaries(const std::filesystem::path& dir);

}  // namespace velmora
