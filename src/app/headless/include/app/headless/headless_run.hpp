#pragma once

#include "app/controller/platform_services.hpp"
#include "app/core/launch_options.hpp"

namespace velmora {

/// Runs the watchdog without a display until SIGINT or SIGTERM; returns the exit status.
int runHeadless(LaunchOptions opts, PlatformParts parts);

}  // namespace velmora
