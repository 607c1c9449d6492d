#include <chrono>
#include <cstdio>
#include <string>
#include <thread>

#include "app/controller/platform_services.hpp"
#include "app/core/command_line.hpp"
#include "app/core/data_dir_check.hpp"
#include "app/core/history_export.hpp"
#include "app/core/launch_options.hpp"
#include "app/core/process_setup.hpp"
#include "app/core/resource_dirs.hpp"
#include "app/core/usage.hpp"
#include "metrics/backend_factory.hpp"
#include "metrics/cause_factory.hpp"
#include "metrics/diagnose.hpp"
#include "policy/constants.hpp"

namespace {

constexpr const char* programName = "velmora-heat-monitor";

int diagnose(const velmora::LaunchOptions& opts) {
    const auto resources =
        velmora::resourceReport(velmora::resourceDirectory(velmora::runningExecutable()));
    std::fputs(resources.c_str(), stdout);
    auto collector = velmora::makePlatformCollector(opts);
    auto causes = velmora::makePlatformCauseReader(
        velmora::causeRootFromEnvironment(velmora::metricsRootFromEnvironment()));
    const auto first = velmora::MonoTime::now();
    if (causes) causes->scan(first, first);
    // The collector read the counters once; a second reading a moment later gives real loads.
    std::this_thread::sleep_for(std::chrono::milliseconds(250));
    auto report = velmora::diagnoseReport(*collector, velmora::Timestamp::now());
    if (causes) {
        const auto second = velmora::MonoTime::now();
        report += velmora::busiestReport(causes->scan(first, second), second - first);
    }
    std::fputs(report.c_str(), stdout);
    return 0;
}

}  // namespace

int main(int argc, char** argv) {
    using namespace velmora;
    if (const auto note = prepareProcess()) {
        std::fprintf(stderr, "%s: %s\n", programName, note->c_str());
    }
    const auto args = argumentList(argc, argv);
    // A switch that decides a power-off must be exact: refuse before anything else happens.
    const auto scanned = scanArguments(args);
    if (!scanned.problem.empty()) {
        std::fprintf(stderr, "%s: %s\nTry '%s --help' for the list of switches.\n", programName,
                     scanned.problem.c_str(), programName);
        return 2;
    }
    // Help and the version need no data directory.
    if (switchGiven(scanned, "--help")) {
        std::fputs(usageText().c_str(), stdout);
        return 0;
    }
    if (switchGiven(scanned, "--version")) {
        std::printf("%s %s\n", programName, std::string(watchdog::version).c_str());
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
    return runPlatformShell(std::move(*opts), env);
}
