#include "app/headless/headless_run.hpp"

#include <unistd.h>

#include <chrono>
#include <optional>
#include <variant>

#include "app/controller/start_report.hpp"
#include "app/core/exit_deadline.hpp"
#include "app/core/instance_lock.hpp"
#include "app/headless/glib_main_loop.hpp"
#include "app/headless/headless_shell.hpp"

namespace velmora {

namespace {

// How long the clean-up after a quit request may take before the process ends regardless.
constexpr std::chrono::milliseconds kQuitDeadline{1500};

}  // namespace

int runHeadless(LaunchOptions opts, PlatformParts parts) {
    // Before anything reads or writes the data directory: a second instance touches nothing.
    const auto lock = InstanceLock::acquire(opts.dataDir);
    if (!instanceMayRun(lock, opts.dataDir)) return 1;
    std::optional<ExitDeadline> quitDeadline;
    GlibMainLoop loop;
    loop.quitOnTerminationSignals();
    HeadlessShell shell(stdout, isatty(STDOUT_FILENO) == 1, parts.sounds, [&loop] { loop.quit(); });
    {
        AppController app(std::move(opts), shell, loop, std::move(parts.services));
        app.start();
        reportStartProblems(app);
        loop.run();
        quitDeadline.emplace(kQuitDeadline, 0);
        shell.finish();
        app.willTerminate();
    }  // the log writes what is still queued before the process ends
    return 0;
}

}  // namespace velmora
