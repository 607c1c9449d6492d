#include <cstdio>

#include "app/controller/platform_services.hpp"
#include "app/core/desktop_module.hpp"
#include "app/core/resource_dirs.hpp"
#include "app/core/shell_choice.hpp"
#include "app/headless/headless_run.hpp"

namespace velmora {

int runPlatformShell(LaunchOptions opts, const PlatformEnvironment& env) {
    const auto executable = runningExecutable();
    const auto resources = resourceDirectory(executable);
    if (pickShell(opts, env) == ShellKind::desktop) {
        const auto desktop = runDesktopModule(opts, env, resources, executable);
        if (const auto* status = std::get_if<int>(&desktop)) return *status;
        std::fprintf(stderr, "velmora-heat-monitor: %s; running headless\n",
                     std::get<DesktopUnavailable>(desktop).reason.c_str());
    }
    auto parts = makePlatformParts(opts, env, resources);
    return runHeadless(std::move(opts), std::move(parts));
}

}  // namespace velmora
