#pragma once

#include "store/store_error.hpp"

#include <filesystem>
#include <string_view>

// The write side shared by the two stores.
namespace velmora {

/// mkdir -p; nothing to do for an empty path (the current directory).
WriteError createDirectories(const std::filesystem::path& dir);

/// Writes a sibling temporary file and renames it over `target`, so readers see either the
/// old or the new contents; the temporary file never outlives a failure.
WriteError replaceFileAtomically(const std::filesystem::path& target, std::string_view bytes);

/// Truncates `target` (creating it if needed), writes `bytes` and flushes them to the storage
/// device before returning.
WriteError writeDurably(const std::filesystem::path& target, std::string_view bytes);

}  // namespace velmora
