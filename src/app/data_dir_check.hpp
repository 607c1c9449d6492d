#pragma once

#include <filesystem>
#include <optional>
#include <string>

namespace velmora {

/// Why nothing can be logged or saved in `dir` (it is missing or not writable), in words for
/// the person who started the program; nothing when it is usable.
std::optional<std::string> dataDirProblem(const std::filesystem::path& dir);

}  // namespace velmora
