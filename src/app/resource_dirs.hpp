#pragma once

#include <filesystem>

namespace velmora {

/// Where the pages and sounds are: "resources" beside the executable (a build tree), else
/// "../share/velmora-heat-monitor" from it (an installation).
std::filesystem::path resourceDirectory(const std::filesystem::path& executable);

/// The running executable's own path, from the process's proc entry; empty when unknown.
std::filesystem::path runningExecutable();

}  // namespace velmora
