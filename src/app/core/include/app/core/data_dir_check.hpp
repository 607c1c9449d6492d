#pragma once

#include <filesystem>
#include <optional>
#include <string>

namespace velmora {

/// Makes `dir` ready before anything is written: creates it private to the user (0700) when
/// missing, and removes temporary files that a killed write left behind. Refuses, as ssh does
/// with its keys, a directory that another user owns or that others may write to: there they
/// could plant a link and have the log or the marker overwrite a file of the user's. Returns
/// the refusal in words for the person who started the program; nothing when the directory
/// may be used, also when it cannot be created (dataDirProblem says so later).
std::optional<std::string> prepareDataDir(const std::filesystem::path& dir);

/// Why nothing can be logged or saved in `dir` (it is missing or not writable), in words for
/// the person who started the program; nothing when it is usable.
std::optional<std::string> dataDirProblem(const std::filesystem::path& dir);

}  // namespace velmora
