#pragma once

#include <optional>
#include <string>
#include <vector>

#include "policy/level.hpp"

namespace velmora {

/// One process and its share of the window: 100 = one core busy for all of it (for GPU rows,
/// the whole GPU).
struct ProcessShare {
    std::string name;
    int pid = 0;
    double percent = 0.0;

    bool operator==(const ProcessShare&) const = default;
};

/// One systemd unit or application scope and its share of one core over the window.
struct ServiceShare {
    std::string name;
    double percent = 0.0;

    bool operator==(const ServiceShare&) const = default;
};

/// The step up the ladder that a sample brought.
struct LevelRise {
    Level from = Level::ok;
    Level to = Level::ok;

    bool operator==(const LevelRise&) const = default;
};

/// What used the machine while it heated, busiest first. Present only above NORMAL.
struct HeatCause {
    std::vector<ProcessShare> processes;
    std::vector<ServiceShare> services;
    std::vector<ProcessShare> gpu;
    /// Set on the one sample in which the level rose; the log says it once.
    std::optional<LevelRise> rise;

    bool operator==(const HeatCause&) const = default;
};

/// The pages' "Heating it:" text, the top three processes: "yes 99 % · cc1plus 35 %".
std::string heatCauseText(const HeatCause& cause);

/// The busiest process as a short phrase, "cc1plus 96 %"; nothing when none was measured.
std::optional<std::string> topProcessPhrase(const HeatCause& cause);

/// The log line of a level rise: "heat: NORMAL -> EXTREME HEAT; busiest: yes (pid 4242) 99% of
/// a core, …; services: user@1000.service/app-firefox.scope 14%". The logger escapes the names.
std::string heatRiseLine(const LevelRise& rise, const HeatCause& cause);

}  // namespace velmora
