#include "app/core/shell_choice.hpp"

namespace velmora {

ShellKind pickShell(const LaunchOptions& opts, const PlatformEnvironment& env) {
    if (opts.headless) return ShellKind::headless;
#if defined(__APPLE__)
    (void)env;
    return ShellKind::desktop;
#else
    return env.display ? ShellKind::desktop : ShellKind::headless;
#endif
}

}  // namespace velmora
