#pragma once

#include <filesystem>
#include <string>
#include <variant>

#include "app/core/launch_options.hpp"

namespace velmora {

/// What the executable gives the desktop module: plain data only, because the module carries
/// its own copy of the watchdog's code and makes its own parts from it.
struct DesktopRequest {
    const LaunchOptions* opts;
    const PlatformEnvironment* env;
    const char* resources;
};

/// The module's answer when GTK cannot open the display; any other value is the exit status.
inline constexpr int desktopNoDisplay = -1;

/// The module's one exported function, looked up by this name.
inline constexpr const char* desktopEntryName = "velmora_desktop_main";
using DesktopEntry = int (*)(const DesktopRequest*);

/// The module's file name, looked for beside the executable (the build tree), then in the
/// installed module folder.
inline constexpr const char* desktopModuleName = "velmora-heat-monitor-desktop.so";

/// Why the desktop window cannot run, for a one-line message before the headless watchdog.
struct DesktopUnavailable {
    std::string reason;
};

/// Runs the desktop window from its module; its exit status, or why there is no window.
std::variant<int, DesktopUnavailable> runDesktopModule(const LaunchOptions& opts,
                                                       const PlatformEnvironment& env,
                                                       const std::filesystem::path& resources,
                                                       const std::filesystem::path& executable);

}  // namespace velmora
