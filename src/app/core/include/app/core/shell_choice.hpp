#pragma once

#include "app/core/launch_options.hpp"

namespace velmora {

enum class ShellKind { headless, desktop };

/// Headless on request or when there is no display to show a window on; the desktop shell
/// otherwise (macOS always has one).
ShellKind pickShell(const LaunchOptions& opts, const PlatformEnvironment& env);

}  // namespace velmora
