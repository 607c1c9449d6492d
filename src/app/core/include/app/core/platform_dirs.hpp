#pragma once

#include <filesystem>
#include <optional>
#include <string>

namespace velmora {

/// The parts of the process environment that decide where files live, read once so that the
/// rules below stay pure and testable.
struct PlatformEnvironment {
    std::optional<std::string> home;
    std::optional<std::string> xdgDataHome;
    std::optional<std::string> xdgConfigHome;
    std::filesystem::path workingDir;
    /// An X11 or Wayland display is named in the environment.
    bool display = false;

    static PlatformEnvironment current();
};

/// Application Support + "Velmora Heat Monitor" on macOS; $XDG_DATA_HOME (else
/// ~/.local/share) + "velmora-heat-monitor" elsewhere. Nothing when no base exists.
std::optional<std::filesystem::path> defaultDataDir(const PlatformEnvironment& env);

/// Where the appearance preference lives: $XDG_CONFIG_HOME (else ~/.config) +
/// "velmora-heat-monitor" on Linux; the user's Preferences folder on macOS.
std::optional<std::filesystem::path> defaultConfigDir(const PlatformEnvironment& env);

/// A leading "~" or "~/" becomes the home directory; a relative result is made absolute
/// against the working directory.
std::filesystem::path resolveUserPath(const std::string& text, const PlatformEnvironment& env);

}  // namespace velmora
