// The command line: any arguments, split at NUL bytes. A command line that is not refused must
// hold only switches of the table, each value where one belongs, and parse to options that say
// exactly what it said; one that is refused names an argument that is really there.

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <string>
#include <vector>

#include "app/core/command_line.hpp"
#include "app/core/launch_options.hpp"
#include "fuzz_support.hpp"

namespace {

std::vector<std::string> argumentsOf(std::string_view text) {
    std::vector<std::string> args{"velmora-heat-monitor"};
    std::size_t start = 0;
    while (start <= text.size()) {
        const auto end = std::min(text.find('\0', start), text.size());
        args.emplace_back(text.substr(start, end - start));
        start = end + 1;
    }
    return args;
}

bool platformArgument(const std::string& arg) {
    return arg.starts_with("-psn_") || arg.starts_with("-NS") || arg.starts_with("-Apple");
}

void checkAccepted(const std::vector<std::string>& args, const velmora::ScannedArguments& scanned) {
    using velmora::fuzz::require;
    // Every argument is a switch, a value right after a switch that takes one, or macOS's.
    for (std::size_t i = 1; i < args.size(); ++i) {
        if (platformArgument(args[i])) continue;
        if (velmora::findSwitch(args[i])) {
            if (velmora::findSwitch(args[i])->takesValue()) ++i;
            continue;
        }
        const bool platformValue =
            i > 1 && platformArgument(args[i - 1]) && !args[i].starts_with('-');
        require(platformValue, "an accepted command line holds only known switches");
    }
    velmora::PlatformEnvironment env;
    env.home = "/home/fuzz";
    env.workingDir = "/work";
    const auto opts = velmora::LaunchOptions::parse(args, env);
    require(opts.has_value(), "an accepted command line parses when HOME is set");
    const auto given = [&](std::string_view name) {
        return std::ranges::any_of(scanned.given,
                                   [&](const auto& g) { return g.option->name == name; });
    };
    require(opts->dryRun == (given("--dry-run-shutdown") || given("--test-emergency")),
            "a dry run is exactly what the command line asked for");
    require(opts->mute == given("--mute"), "mute is exactly what the command line asked for");
    require(opts->forceThermal.has_value() == given("--force-thermal"),
            "a forced thermal state comes only from --force-thermal");
    require(opts->consent.has_value() == given("--consent"), "consent comes only from --consent");
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    using velmora::fuzz::require;
    const auto args = argumentsOf(velmora::fuzz::asText(data, size));
    const auto scanned = velmora::scanArguments(args);
    require(velmora::commandLineProblem(args).value_or("") == scanned.problem,
            "the refusal is the scan's problem");
    if (scanned.problem.empty()) {
        checkAccepted(args, scanned);
        return 0;
    }
    // The refusal quotes an argument that is really on the command line.
    const bool namesOne =
        std::ranges::any_of(args.begin() + 1, args.end(), [&](const std::string& a) {
            return scanned.problem.find("'" + a + "'") != std::string::npos ||
                   scanned.problem.find("'" + a.substr(0, a.find('=')) + "'") != std::string::npos;
        });
    require(namesOne, "a refusal names the argument it refuses");
    return 0;
}
