#pragma once

#include <filesystem>
#include <memory>

#include "app/controller/app_controller.hpp"
#include "app/core/launch_options.hpp"

namespace velmora {

/// The running platform's real parts: the live collector over its metrics backend, the
/// preference file, the shutdowner, the permission check and (unless muted) the sounds.
struct PlatformParts {
    AppServices services;
    /// The sound player shared by the engine's cues and the presentation's own.
    std::shared_ptr<Sounder> sounds;
};

PlatformParts makePlatformParts(const LaunchOptions& opts, const PlatformEnvironment& env,
                                const std::filesystem::path& resources);

/// A collector over the platform's backend, with the forced thermal state applied; the same
/// on every platform.
std::unique_ptr<HeatCollector> makePlatformCollector(const LaunchOptions& opts);

/// Runs the watchdog in the platform's shell until it ends and returns the exit status: on
/// Linux the desktop window when a display may exist (from its module), else the headless
/// watchdog (app/main/platform_shell_linux.cpp); on macOS the Cocoa application
/// (app/cocoa/platform_shell_apple.cpp).
int runPlatformShell(LaunchOptions opts, const PlatformEnvironment& env);

}  // namespace velmora
