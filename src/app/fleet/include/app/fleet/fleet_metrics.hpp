#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <vector>

#include "metrics/live_inputs.hpp"
#include "metrics/metrics_backend.hpp"
#include "policy/timestamp.hpp"

namespace velmora {

/// The watchdog's own figures beside the live readings: what the engine decided and how often.
struct WatchdogFigures {
    /// 0 (NORMAL) to 4 (EMERGENCY); nothing without a reading.
    std::optional<int> level;
    bool autoShutdown = false;
    bool consentRecorded = false;
    /// Whole seconds left while a real countdown runs.
    std::optional<std::int64_t> countdownRemaining;
    std::uint64_t emergencies = 0;
    std::uint64_t countdowns = 0;
    std::uint64_t shutdownCalls = 0;
};

/// The whole Prometheus text for one sample: every temperature with its kind, the thresholds,
/// the level and thermal state, fans, power, CPU, memory, battery and the watchdog's figures.
/// `sampledAt` is written as seconds since the epoch, so that a stale file shows.
std::string fleetMetricsText(const LiveInputs& live, const WatchdogFigures& watchdog,
                             const std::vector<ThermalLimit>& limits, Timestamp sampledAt);

}  // namespace velmora
