#pragma once

#include <filesystem>
#include <optional>
#include <string>
#include <vector>

#include "app/core/platform_dirs.hpp"
#include "policy/thermal_state.hpp"

namespace velmora {

/// What the command line asked for, read against the switch table (see scanArguments). A
/// command line that commandLineProblem refuses must not be used; parse then reads only the
/// switches that were given correctly.
struct LaunchOptions {
    bool testEmergency = false;
    bool dryRun = false;
    bool noMenuItem = false;
    bool mute = false;
    std::filesystem::path dataDir;
    bool simulateDenied = false;
    bool realProbe = false;

    bool headless = false;
    std::optional<ThermalState> forceThermal;
    std::optional<bool> consent;
    bool diagnose = false;
    /// Where to write the Prometheus text file; empty for none.
    std::filesystem::path metricsFile;
    /// Where to write the history as CSV, "-" for standard output; empty for no export.
    std::string exportHistory;
    bool help = false;
    bool version = false;

    /// Switches that were accepted but have no effect (a probe switch without a dry run).
    std::vector<std::string> warnings;

    /// Nothing when no --data-dir is given and the platform has no place for the data
    /// directory at all.
    static std::optional<LaunchOptions> parse(const std::vector<std::string>& args,
                                              const PlatformEnvironment& env);
};

/// The process's arguments as texts, the program path included.
std::vector<std::string> argumentList(int argc, const char* const* argv);

}  // namespace velmora
