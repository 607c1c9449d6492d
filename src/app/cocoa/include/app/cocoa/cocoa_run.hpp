#pragma once

#include "app/controller/platform_services.hpp"
#include "app/core/launch_options.hpp"

namespace velmora {

/// Runs the Mac application: the shared application object, its delegate, the window, menus
/// and menu-bar item, until the user quits or closes the window. Returns the exit status when
/// AppKit does not end the process itself.
int runCocoa(LaunchOptions opts, PlatformParts parts);

}  // namespace velmora
