#pragma once

#include "store/store_error.hpp"

#include <filesystem>
#include <string_view>

// The write side shared by the two stores and the log.
namespace velmora {

/// mkdir -p, the last directory private to the user (0700) when it is created here; nothing
/// to do for an empty path (the current directory) or a directory that exists.
WriteError createDirectories(const std::filesystem::path& dir);

/// Writes a private sibling temporary file, flushes it to the storage device, renames it over
/// `target` and flushes the directory, so that a crash, a kill or a power cut at any moment
/// leaves either the old or the new contents, never an empty or partial file. A symbolic link
/// planted at `target` is replaced, never followed. The temporary file never outlives a
/// failure; one left by a killed process is removed by removeStrayTemporaries.
WriteError replaceFileAtomically(const std::filesystem::path& target, std::string_view bytes);

/// Removes the temporary files that replaceFileAtomically left in `dir` when its process was
/// killed mid-write; files of a process that is still running are left alone. Returns how
/// many were removed.
int removeStrayTemporaries(const std::filesystem::path& dir);

}  // namespace velmora
