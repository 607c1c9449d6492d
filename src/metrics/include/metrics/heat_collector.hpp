#pragma once

#include <chrono>
#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "metrics/forecast_feed.hpp"
#include "metrics/heat_cause_tracker.hpp"
#include "metrics/live_inputs.hpp"
#include "metrics/metrics_backend.hpp"
#include "metrics/source_table.hpp"
#include "policy/level.hpp"
#include "policy/thermal_state.hpp"
#include "policy/timestamp.hpp"

namespace velmora {

/// Samples the platform once a second into one `LiveInputs` snapshot and keeps the little
/// history the dashboard needs: the last 60 CPU loads, the highest level and CPU temperature.
class HeatCollector {
  public:
    /// The time between samples.
    static constexpr std::chrono::seconds interval{1};
    static constexpr std::size_t historyLength = 60;
    /// A snapshot older than this no longer says anything about the thermal state.
    static constexpr std::chrono::seconds staleAfter{10};

    /// Primes the backend's delta counters so that the first sample already has loads.
    explicit HeatCollector(std::unique_ptr<MetricsBackend> backend,
                           Timestamp now = Timestamp::now());

    LiveInputs sample(Timestamp now);

    /// The thermal state of a sample younger than ten seconds; nothing otherwise.
    std::optional<ThermalState> currentThermal(Timestamp now) const;

    std::string sensorSummary();
    void assumeThermal(ThermalState previous);
    /// From now on each sample above NORMAL says what is heating the machine.
    void setCauseTracker(std::unique_ptr<HeatCauseTracker> tracker) { cause_ = std::move(tracker); }
    std::vector<std::string> takeNotices();
    std::vector<SourceRow> sourceTable() const;
    std::vector<ThermalLimit> thermalLimits() const { return backend_->thermalLimits(); }

    const std::optional<LiveInputs>& last() const { return last_; }
    std::optional<Timestamp> lastAt() const { return lastAt_; }

    /// A test override that replaces the platform's thermal state while set.
    std::optional<ThermalState> forcedThermal;
    /// The monotonic clock the forecast measures its intervals on.
    std::function<MonoTime()> monoClock = &MonoTime::now;

  private:
    void rememberCpuLoad(std::optional<double> cpuBusy);
    void rememberCpuTemp(const std::optional<TempReading>& cpuTemp);

    std::unique_ptr<MetricsBackend> backend_;
    std::unique_ptr<HeatCauseTracker> cause_;
    std::vector<double> cpuHistory_;
    Level peak_ = Level::ok;
    std::optional<double> peakCpuTemp_;
    std::optional<LiveInputs> last_;
    std::optional<Timestamp> lastAt_;
    ForecastFeed forecast_;
};

}  // namespace velmora
