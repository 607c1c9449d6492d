#pragma once

#include <filesystem>
#include <functional>
#include <string>
#include <vector>

#include "app/fleet/fleet_metrics.hpp"
#include "app/fleet/watchdog_observer.hpp"
#include "policy/sinks.hpp"

namespace velmora {

/// Writes the live state as a Prometheus text file after every sample, for node_exporter's
/// textfile collector: a temporary file beside it, then a rename, so a reader never sees half
/// a file. Counts emergencies, countdowns and shutdown calls from what the watchdog does.
class MetricsFile final : public WatchdogObserver {
  public:
    using Limits = std::function<std::vector<ThermalLimit>()>;

    MetricsFile(std::filesystem::path path, LogSink log, Limits limits);

    void ticked(const nlohmann::json& view) override;
    void sampled(const LiveInputs& inputs, Timestamp now) override;
    void shutdownRequested() override { ++figures_.shutdownCalls; }

    const WatchdogFigures& figures() const { return figures_; }

  private:
    /// Nothing on success, otherwise why the file could not be written.
    std::optional<std::string> write(const std::string& text) const;

    std::filesystem::path path_;
    LogSink log_;
    Limits limits_;
    WatchdogFigures figures_;
    bool inEmergency_ = false;
    bool inCountdown_ = false;
    /// The last failure logged, so that a lasting problem is logged once, not every second.
    std::string lastProblem_;
};

}  // namespace velmora
