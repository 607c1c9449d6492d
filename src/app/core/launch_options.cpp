#include "app/core/launch_options.hpp"

#include <algorithm>

#include "app/core/command_line.hpp"

namespace velmora {

namespace {

/// The value given with `name`, when it was given.
std::optional<std::string> valueOf(const ScannedArguments& scanned, std::string_view name) {
    const auto found = std::ranges::find_if(
        scanned.given, [&](const GivenSwitch& g) { return g.option->name == name; });
    if (found == scanned.given.end()) return std::nullopt;
    return found->value;
}

std::optional<bool> consentAnswer(const std::optional<std::string>& answer) {
    if (!answer) return std::nullopt;
    std::string lowered = *answer;
    std::ranges::transform(lowered, lowered.begin(), [](char c) {
        return c >= 'A' && c <= 'Z' ? static_cast<char>(c - 'A' + 'a') : c;
    });
    if (lowered == "on") return true;
    if (lowered == "off") return false;
    return std::nullopt;
}

void noteProbeSwitchesWithoutDryRun(const ScannedArguments& scanned, LaunchOptions& opts) {
    for (const std::string_view name : {"--simulate-denied", "--real-probe"}) {
        if (!opts.dryRun && switchGiven(scanned, name)) {
            opts.warnings.push_back(std::string(name) +
                                    " has no effect without --dry-run-shutdown or "
                                    "--test-emergency");
        }
    }
}

}  // namespace

std::optional<LaunchOptions> LaunchOptions::parse(const std::vector<std::string>& args,
                                                  const PlatformEnvironment& env) {
    const auto scanned = scanArguments(args);
    LaunchOptions opts;
    if (const auto dir = valueOf(scanned, "--data-dir")) {
        opts.dataDir = resolveUserPath(*dir, env);
    } else if (const auto fallbackDir = defaultDataDir(env)) {
        opts.dataDir = *fallbackDir;
    } else {
        return std::nullopt;
    }
    opts.testEmergency = switchGiven(scanned, "--test-emergency");
    // A test emergency must never shut the machine down, so it always implies a dry run.
    opts.dryRun = switchGiven(scanned, "--dry-run-shutdown") || opts.testEmergency;
    opts.mute = switchGiven(scanned, "--mute");
    opts.noMenuItem = switchGiven(scanned, "--no-menu-item");
    if (opts.dryRun) {
        opts.simulateDenied = switchGiven(scanned, "--simulate-denied");
        opts.realProbe = switchGiven(scanned, "--real-probe");
    }
    noteProbeSwitchesWithoutDryRun(scanned, opts);
    opts.headless = switchGiven(scanned, "--headless");
    if (const auto name = valueOf(scanned, "--force-thermal")) {
        opts.forceThermal = thermalStateNamed(*name);
    }
    opts.consent = consentAnswer(valueOf(scanned, "--consent"));
    opts.diagnose = switchGiven(scanned, "--diagnose");
    if (const auto path = valueOf(scanned, "--metrics-file")) {
        opts.metricsFile = resolveUserPath(*path, env);
    }
    if (const auto target = valueOf(scanned, "--export-history")) {
        opts.exportHistory = *target == "-" ? *target : resolveUserPath(*target, env).string();
    }
    opts.help = switchGiven(scanned, "--help");
    opts.version = switchGiven(scanned, "--version");
    return opts;
}

std::vector<std::string> argumentList(int argc, const char* const* argv) {
    std::vector<std::string> args;
    args.reserve(argc > 0 ? static_cast<std::size_t>(argc) : 0U);
    for (int i = 0; i < argc; ++i)
        args.emplace_back(argv[i]);  // NOLINT(*-pointer-arithmetic)
    return args;
}

}  // namespace velmora
