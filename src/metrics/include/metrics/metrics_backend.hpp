#pragma once

#include <optional>
#include <string>
#include <vector>

#include "metrics/limit_reading.hpp"
#include "metrics/live_inputs.hpp"
#include "policy/thermal_state.hpp"
#include "policy/timestamp.hpp"

namespace velmora {

/// One device that judges its own heat (a GPU with thresholds), as a diagnostic row.
struct DeviceSource {
    std::string label;
    std::optional<std::string> value;
    std::string source;
};

/// Where each row of the diagnostic source table comes from on this platform.
struct MetricSources {
    std::string thermal;
    std::string cpuBusy;
    std::string perCore;
    std::string load;
    std::string memory;
    std::string memPressure;
    std::string cpuTemp;
    std::string gpuTemp;
    std::string batteryTemp;
    std::string gpuLoad;
    std::string fans;
    std::string power;
    /// Listed after the fixed rows, one per device.
    std::vector<DeviceSource> devices{};
    /// The file behind each of the latest sample's `powerSources`, in the same order.
    std::vector<std::string> powerFiles{};
};

/// One temperature threshold the derived thermal state is judged by.
struct ThermalLimit {
    /// The source it belongs to (an attribute's path, a GPU).
    std::string source;
    /// The state reached at it: "fair", "serious" or "critical".
    std::string state;
    double celsius = 0.0;
};

/// One platform's metric sources. Readers never throw; every failure is an absent value.
class MetricsBackend {
  public:
    virtual ~MetricsBackend() = default;

    /// Reads the delta counters once so that the first real sample already has loads.
    virtual void prime(Timestamp now) = 0;
    /// One sample of the platform's own figures; `now` drives rate figures and periodic
    /// rediscovery. The collector's own fields (`peakLevel`, `peakCpuTemp`, `cpuHistory`,
    /// `forced`) are left at their defaults; `thermal` is the platform's state (macOS) or the
    /// one derived from the kernel (Linux); `sensors` are hottest first, stable among equals.
    virtual LiveInputs sample(Timestamp now) = 0;
    /// One line saying which sensors were found, for the start-up log.
    virtual std::string sensorSummary() = 0;
    /// The sources of the latest sample's figures, naming the platform's interfaces or files.
    virtual MetricSources sources() const = 0;
    /// The thresholds behind the derived thermal state; none where the OS states it itself.
    virtual std::vector<ThermalLimit> thermalLimits() const { return {}; }
    /// The latest sample's sources that have a critical limit, each with its reading; none
    /// where the OS states the thermal state itself.
    virtual std::vector<LimitReading> limitReadings() const { return {}; }
    /// Tells a fresh backend the thermal state its predecessor last reported, so that a state
    /// that needed confirming stays confirmed across the change.
    virtual void assumeThermal(ThermalState /*previous*/) {}
    /// Lines worth logging since the last call (sensors left out, rediscoveries); readers do
    /// not log themselves.
    virtual std::vector<std::string> takeNotices() { return {}; }
};

}  // namespace velmora
