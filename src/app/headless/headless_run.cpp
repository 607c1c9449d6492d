#include "app/headless/headless_run.hpp"

#include <unistd.h>

#include <cstdio>

#include "app/data_dir_check.hpp"
#include "app/headless/glib_main_loop.hpp"
#include "app/headless/headless_shell.hpp"

namespace velmora {

namespace {

/// Start-up problems the log cannot tell, because they may keep the log from being written.
void reportStartProblems(const AppController& app) {
    if (const auto problem = dataDirProblem(app.opts.dataDir)) {
        std::fprintf(stderr, "velmora-heat-monitor: %s\n", problem->c_str());
    }
    if (app.opts.consent && !app.engine->set.consentRecorded) {
        std::fprintf(stderr, "velmora-heat-monitor: could not record consent in %s\n",
                     app.engine->settings.url().c_str());
    }
}

}  // namespace

int runHeadless(LaunchOptions opts, PlatformParts parts) {
    GlibMainLoop loop;
    loop.quitOnTerminationSignals();
    HeadlessShell shell(stdout, isatty(STDOUT_FILENO) == 1, parts.sounds, [&loop] { loop.quit(); });
    {
        AppController app(std::move(opts), shell, loop, std::move(parts.services));
        app.start();
        reportStartProblems(app);
        loop.run();
        shell.finish();
        app.willTerminate();
    }  // the log writes what is still queued before the process ends
    return 0;
}

}  // namespace velmora
