#pragma once

#include <filesystem>
#include <optional>
#include <string>
#include <variant>

#include "app/core/launch_options.hpp"

namespace velmora {

/// What the executable gives the desktop module. Both are linked to the one shared library
/// that holds the watchdog's code, so C++ objects may cross, as long as both sides were
/// built against the same headers: desktopModuleAbi says so.
struct DesktopRequest {
    const LaunchOptions* opts;
    const PlatformEnvironment* env;
    const char* resources;
};

/// The module's answer when GTK cannot open the display; any other value is the exit status.
inline constexpr int desktopNoDisplay = -1;

/// Raised whenever DesktopRequest, DesktopModule or a type either reaches (LaunchOptions,
/// PlatformEnvironment) changes its layout, so that an executable never runs a module built
/// for another one. The program's version is checked beside it.
inline constexpr unsigned desktopModuleAbi = 2;

/// The module's one exported symbol, a constant looked up by the name desktopEntryName.
struct DesktopModule {
    unsigned abi;
    /// The program version the module was built as (watchdog::version).
    const char* version;
    int (*run)(const DesktopRequest*);
};

inline constexpr const char* desktopEntryName = "velmora_desktop_module";

/// The module's file name, looked for beside the executable (the build tree), then in the
/// installed module folder.
inline constexpr const char* desktopModuleName = "velmora-heat-monitor-desktop.so";

/// Why the desktop window cannot run, for a one-line message before the headless watchdog.
struct DesktopUnavailable {
    std::string reason;
};

/// Why `module` may not be run by this executable, or nothing when its ABI number and
/// version are this executable's own.
std::optional<std::string> desktopModuleMismatch(const DesktopModule& module);

/// Runs the desktop window from its module; its exit status, or why there is no window.
std::variant<int, DesktopUnavailable> runDesktopModule(const LaunchOptions& opts,
                                                       const PlatformEnvironment& env,
                                                       const std::filesystem::path& resources,
                                                       const std::filesystem::path& executable);

}  // namespace velmora
