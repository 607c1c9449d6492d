#pragma once

#include "app/launch_options.hpp"
#include "app/platform_services.hpp"

namespace velmora {

/// Runs the watchdog without a display until SIGINT or SIGTERM; returns the exit status.
int runHeadless(LaunchOptions opts, PlatformParts parts);

}  // namespace velmora
