#include "app/headless/headless_run.hpp"

#include <unistd.h>

#include <cstdio>

#include "app/headless/glib_main_loop.hpp"
#include "app/headless/headless_shell.hpp"

namespace velmora {

int runHeadless(LaunchOptions opts, PlatformParts parts) {
    GlibMainLoop loop;
    loop.quitOnTerminationSignals();
    HeadlessShell shell(stdout, isatty(STDOUT_FILENO) == 1, parts.sounds, [&loop] { loop.quit(); });
    {
        AppController app(std::move(opts), shell, loop, std::move(parts.services));
        app.start();
        loop.run();
        shell.finish();
        app.willTerminate();
    }  // the log writes what is still queued before the process ends
    return 0;
}

}  // namespace velmora
