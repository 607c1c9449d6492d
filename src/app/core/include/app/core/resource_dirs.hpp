#pragma once

#include <filesystem>
#include <string>

namespace velmora {

/// Where the pages and sounds are: "resources" beside the executable (a build tree), else
/// "../share/velmora-heat-monitor" from it (an installation).
std::filesystem::path resourceDirectory(const std::filesystem::path& executable);

/// An icon theme folder holding the program's own icons for the tray host: "icons" in the
/// resources (a build tree), else the share folder's "icons" beside them (an installation
/// whose prefix the desktop's theme search may not know); empty when neither exists.
std::filesystem::path iconSearchPath(const std::filesystem::path& resources);

/// Says where the resources are and whether every page and sound is there, for --diagnose.
std::string resourceReport(const std::filesystem::path& resources);

/// The running executable's own path, from the process's proc entry; empty when unknown.
std::filesystem::path runningExecutable();

}  // namespace velmora
