#pragma once

#include <optional>
#include <string>
#include <vector>

namespace velmora {

/// The temperatures at which a GPU's own firmware acts, in degrees Celsius; absent when the
/// GPU does not state one.
struct GpuThresholds {
    /// The hardware starts clocking down.
    std::optional<double> slowdown{};
    /// The hardware cuts power.
    std::optional<double> shutdown{};
    /// The highest temperature the GPU is meant to run at.
    std::optional<double> gpuMax{};
    /// The same for its memory (judged against a memory temperature, which is not read).
    std::optional<double> memoryMax{};

    bool operator==(const GpuThresholds&) const = default;
};

/// Which of the clock-lowering reasons that mean heat or a power emergency are active.
struct GpuThrottle {
    bool hwThermal = false;
    bool swThermal = false;
    bool powerBrake = false;

    bool any() const { return hwThermal || swThermal || powerBrake; }
    bool operator==(const GpuThrottle&) const = default;
};

/// One discrete GPU as its vendor library reports it.
struct VendorGpu {
    std::string name;
    std::optional<double> celsius;
    std::optional<double> busyPercent;
    GpuThresholds thresholds{};
    /// Nothing when the library cannot tell.
    std::optional<GpuThrottle> throttle{};
    std::optional<double> watts{};
};

/// One process running on a GPU and its share of that GPU's time, when the library tells.
struct GpuProcessUse {
    unsigned int pid = 0;
    std::optional<double> percent{};

    bool operator==(const GpuProcessUse&) const = default;
};

/// A vendor management library (NVIDIA's NVML); absent when the library is not installed.
class GpuVendorLibrary {
  public:
    virtual ~GpuVendorLibrary() = default;
    virtual std::string libraryName() const = 0;
    virtual std::vector<VendorGpu> read() = 0;
    /// The processes running on any of its GPUs; none where the library cannot list them.
    virtual std::vector<GpuProcessUse> processes() { return {}; }
};

}  // namespace velmora
