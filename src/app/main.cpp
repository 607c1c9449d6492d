#include <algorithm>
#include <cstdio>
#include <string>

#if defined(__APPLE__)
#include "app/cocoa/cocoa_run.hpp"
#else
#include "app/headless/headless_run.hpp"
#endif
#include "app/launch_options.hpp"
#include "app/platform_services.hpp"
#include "app/resource_dirs.hpp"
#include "app/shell_choice.hpp"
#include "app/usage.hpp"
#include "metrics/diagnose.hpp"
#include "policy/constants.hpp"

namespace {

constexpr const char* programName = "velmora-heat-monitor";

int diagnose(const velmora::LaunchOptions& opts) {
    auto collector = velmora::makePlatformCollector(opts);
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
    const auto args = argumentList(argc, argv);
    // Help and the version need no data directory.
    if (asked(args, "--help")) {
        std::fputs(usageText().c_str(), stdout);
        return 0;
    }
    if (asked(args, "--version")) {
        std::printf("%s\n", std::string(SC::version).c_str());
        return 0;
    }
    const auto env = PlatformEnvironment::current();
    auto opts = LaunchOptions::parse(args, env);
    if (!opts) {
        std::fprintf(stderr,
                     "%s: no place for the data directory: neither XDG_DATA_HOME nor HOME is "
                     "set\n",
                     programName);
        return 1;
    }
    for (const auto& warning : opts->warnings) {
        std::fprintf(stderr, "%s: %s\n", programName, warning.c_str());
    }
    if (opts->diagnose) return diagnose(*opts);
#if defined(__APPLE__)
    // The Mac always has a display: its window, menus and menu-bar item.
    auto macParts = makePlatformParts(*opts, env, {});
    return runCocoa(std::move(*opts), std::move(macParts));
#else
    if (pickShell(*opts, env) == ShellKind::desktop) {
        std::fprintf(stderr, "%s: this build has no desktop window yet; running headless\n",
                     programName);
    }
    auto parts = makePlatformParts(*opts, env, resourceDirectory(runningExecutable()));
    return runHeadless(std::move(*opts), std::move(parts));
#endif
}
