#include "app/cocoa/cocoa_run.hpp"
#include "app/controller/platform_services.hpp"

namespace velmora {

// The Mac always has a display: its window, menus and menu-bar item. The pages come from the
// application bundle, so no resource folder is named.
int runPlatformShell(LaunchOptions opts, const PlatformEnvironment& env) {
    auto parts = makePlatformParts(opts, env, {});
    return runCocoa(std::move(opts), std::move(parts));
}

}  // namespace velmora
