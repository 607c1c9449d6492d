#include "app/launch_options.hpp"

#include <algorithm>
#include <iterator>

namespace velmora {

namespace {

bool has(const std::vector<std::string>& args, std::string_view name) {
    return std::find(args.begin(), args.end(), name) != args.end();
}

/// The argument right after the first `name`, when there is one.
std::optional<std::string> valueAfter(const std::vector<std::string>& args, std::string_view name) {
    const auto found = std::find(args.begin(), args.end(), name);
    if (found == args.end() || std::next(found) == args.end()) return std::nullopt;
    return *std::next(found);
}

void readForcedThermal(const std::vector<std::string>& args, LaunchOptions& opts) {
    const auto name = valueAfter(args, "--force-thermal");
    if (!name) return;
    opts.forceThermal = thermalStateNamed(*name);
    if (!opts.forceThermal) {
        opts.warnings.push_back("--force-thermal: '" + *name +
                                "' is not one of nominal, fair, serious, critical; ignored");
    }
}

void readConsent(const std::vector<std::string>& args, LaunchOptions& opts) {
    const auto answer = valueAfter(args, "--consent");
    if (!answer) return;
    if (*answer == "on") {
        opts.consent = true;
    } else if (*answer == "off") {
        opts.consent = false;
    } else {
        opts.warnings.push_back("--consent: '" + *answer + "' is neither on nor off; ignored");
    }
}

void readMetricsFile(const std::vector<std::string>& args, const PlatformEnvironment& env,
                     LaunchOptions& opts) {
    const auto path = valueAfter(args, "--metrics-file");
    if (path && !path->empty() && !path->starts_with("--")) {
        opts.metricsFile = resolveUserPath(*path, env);
    } else if (has(args, "--metrics-file")) {
        opts.warnings.push_back("--metrics-file needs a file path; no metrics file is written");
    }
}

}  // namespace

std::optional<LaunchOptions> LaunchOptions::parse(const std::vector<std::string>& args,
                                                  const PlatformEnvironment& env) {
    const auto fallbackDir = defaultDataDir(env);
    if (!fallbackDir) return std::nullopt;

    LaunchOptions opts;
    opts.dataDir = *fallbackDir;
    opts.testEmergency = has(args, "--test-emergency");
    // A test emergency must never shut the machine down, so it always implies a dry run.
    opts.dryRun = has(args, "--dry-run-shutdown") || opts.testEmergency;
    opts.mute = has(args, "--mute");
    opts.noMenuItem = has(args, "--no-menu-item");
    if (const auto dir = valueAfter(args, "--data-dir")) opts.dataDir = resolveUserPath(*dir, env);
    if (opts.dryRun) {
        opts.simulateDenied = has(args, "--simulate-denied");
        opts.realProbe = has(args, "--real-probe");
    }
    opts.headless = has(args, "--headless");
    readForcedThermal(args, opts);
    readConsent(args, opts);
    opts.diagnose = has(args, "--diagnose");
    readMetricsFile(args, env, opts);
    opts.help = has(args, "--help");
    opts.version = has(args, "--version");
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
