#include <algorithm>
#include <chrono>
#include <csignal>
#include <cstdio>
#include <string>
#include <thread>

#include "app/core/command_line.hpp"
#include "app/core/data_dir_check.hpp"
#if defined(__APPLE__)
#include "app/cocoa/cocoa_run.hpp"
#else
#include "app/core/desktop_module.hpp"
#include "app/headless/headless_run.hpp"
#endif
#include "app/controller/platform_services.hpp"
#include "app/core/history_export.hpp"
#include "app/core/launch_options.hpp"
#include "app/core/process_setup.hpp"
#include "app/core/resource_dirs.hpp"
#include "app/core/shell_choice.hpp"
#include "app/core/usage.hpp"
#include "metrics/diagnose.hpp"
#include "policy/constants.hpp"

namespace {

constexpr const char* programName = "velmora-heat-monitor";

int diagnose(const velmora::LaunchOptions& opts) {
    const auto resources =
        velmora::resourceReport(velmora::resourceDirectory(velmora::runningExecutable()));
    std::fputs(resources.c_str(), stdout);
    auto collector = velmora::makePlatformCollector(opts);
    // The collector read the counters once; a second reading a moment later gives real loads.
    std::this_thread::sleep_for(std::chrono::milliseconds(250));
    const auto report = velmora::diagnoseReport(*collector, velmora::Timestamp::now());
    std::fputs(report.c_str(), stdout);
    return 0;
}

bool asked(const std::vector<std::string>& args, std::string_view name) {
    return std::find(args.begin(), args.end(), name) != args.end();
}

}  // namespace

int main(int argc, char** argv) {
    using namespace velmora;
    if (const auto note = prepareProcess()) {
        std::fprintf(stderr, "%s: %s\n", programName, note->c_str());
    }
    const auto args = argumentList(argc, argv);
    // A switch that decides a power-off must be exact: refuse before anything else happens.
    if (const auto problem = commandLineProblem(args)) {
        std::fprintf(stderr, "%s: %s\nTry '%s --help' for the list of switches.\n", programName,
                     problem->c_str(), programName);
        return 2;
    }
    // A file-size limit must stop log lines, never the watchdog.
    static_cast<void>(std::signal(SIGXFSZ, SIG_IGN));
    // Help and the version need no data directory.
    if (asked(args, "--help")) {
        std::fputs(usageText().c_str(), stdout);
        return 0;
    }
    if (asked(args, "--version")) {
        std::printf("%s\n", std::string(watchdog::version).c_str());
        return 0;
    }
    const auto env = PlatformEnvironment::current();
    auto opts = LaunchOptions::parse(args, env);
    if (!opts) {
        std::fprintf(stderr,
                     "%s: no place for the data directory: neither XDG_DATA_HOME nor HOME is "
                     "set; name one with --data-dir\n",
                     programName);
        return 1;
    }
    for (const auto& warning : opts->warnings) {
        std::fprintf(stderr, "%s: %s\n", programName, warning.c_str());
    }
    if (opts->diagnose) return diagnose(*opts);
    // Read-only and without the instance lock: it may run beside the watchdog.
    if (!opts->exportHistory.empty()) {
        if (const auto problem = exportHistory(opts->dataDir, opts->exportHistory)) {
            std::fprintf(stderr, "%s: %s\n", programName, problem->c_str());
            return 1;
        }
        return 0;
    }
    if (const auto refusal = prepareDataDir(opts->dataDir)) {
        std::fprintf(stderr, "%s: %s\n", programName, refusal->c_str());
        return 1;
    }
#if defined(__APPLE__)
    // The Mac always has a display: its window, menus and menu-bar item.
    auto macParts = makePlatformParts(*opts, env, {});
    return runCocoa(std::move(*opts), std::move(macParts));
#else
    const auto executable = runningExecutable();
    const auto resources = resourceDirectory(executable);
    if (pickShell(*opts, env) == ShellKind::desktop) {
        const auto desktop = runDesktopModule(*opts, env, resources, executable);
        if (const auto* status = std::get_if<int>(&desktop)) return *status;
        std::fprintf(stderr, "%s: %s; running headless\n", programName,
                     std::get<DesktopUnavailable>(desktop).reason.c_str());
    }
    auto parts = makePlatformParts(*opts, env, resources);
    return runHeadless(std::move(*opts), std::move(parts));
#endif
}
