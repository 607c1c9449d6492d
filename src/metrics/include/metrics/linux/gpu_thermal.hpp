#pragma once

#include <string>
#include <vector>

#include "metrics/linux/gpu_vendor.hpp"
#include "metrics/linux/thermal_rules.hpp"

namespace velmora {

/// How far below its shutdown threshold a GPU counts as critical. Data-centre GPUs put their
/// slowdown threshold only 3-5 °C below shutdown (89 and 92 °C are typical), so a wider margin
/// would call a GPU critical while it is still inside its own operating range; 3 °C is the
/// room left once the firmware is already halving the clocks, where the temperature climbs
/// slowly, and two samples in a row must confirm it before a countdown starts.
inline constexpr double kGpuShutdownMargin = 3.0;

/// GPU max M: fair at M (or slowdown - 10 without M). Slowdown S: serious at S. Shutdown X:
/// critical at X - 3 (never below S), serious at X - 10 without S. Implausible values are ignored.
std::vector<ThermalCondition> gpuConditions(const GpuThresholds& thresholds);

/// The thresholds as text for the diagnostic table ("no thresholds" when none is stated).
std::string gpuThresholdsText(const GpuThresholds& thresholds);

/// The active heat and power-brake reasons ("none", or "unknown" when unreadable).
std::string gpuThrottleText(const std::optional<GpuThrottle>& throttle);

}  // namespace velmora
