#pragma once

#include <optional>
#include <string>
#include <vector>

#include "metrics/live_inputs.hpp"
#include "policy/timestamp.hpp"

namespace velmora {

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
    /// The file behind each of the latest sample's `powerSources`, in the same order.
    std::vector<std::string> powerFiles{};
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
};

}  // namespace velmora
