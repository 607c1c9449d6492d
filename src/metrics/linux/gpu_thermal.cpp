#include "metrics/linux/gpu_thermal.hpp"

#include <algorithm>

#include "metrics/number_text.hpp"
#include "metrics/temp_reading.hpp"

namespace velmora {

namespace {

std::optional<double> plausible(std::optional<double> value) {
    return value && plausibleCelsius(*value) ? value : std::nullopt;
}

std::string degrees(double celsius) {
    return wholeText(celsius) + " °C";
}

void appendPart(std::string& text, const std::string& part) {
    text += (text.empty() ? "" : ", ") + part;
}

}  // namespace

std::vector<ThermalCondition> gpuConditions(const GpuThresholds& thresholds) {
    std::vector<ThermalCondition> conditions;
    const auto slowdown = plausible(thresholds.slowdown);
    const auto shutdown = plausible(thresholds.shutdown);
    if (const auto max = plausible(thresholds.gpuMax)) {
        conditions.push_back({ThermalState::fair, *max, kMinimumFall});
    } else if (slowdown) {
        conditions.push_back({ThermalState::fair, *slowdown - 10, kMinimumFall});
    }
    if (slowdown) {
        conditions.push_back({ThermalState::serious, *slowdown, kMinimumFall});
    } else if (shutdown) {
        conditions.push_back({ThermalState::serious, *shutdown - 10, kMinimumFall});
    }
    if (shutdown) {
        const double critical = std::max(*shutdown - kGpuShutdownMargin, slowdown.value_or(0.0));
        conditions.push_back({ThermalState::critical, critical, kMinimumFall});
    }
    return conditions;
}

std::string gpuThresholdsText(const GpuThresholds& thresholds) {
    std::string text;
    if (thresholds.slowdown) appendPart(text, "slowdown " + degrees(*thresholds.slowdown));
    if (thresholds.shutdown) appendPart(text, "shutdown " + degrees(*thresholds.shutdown));
    if (thresholds.gpuMax) appendPart(text, "GPU max " + degrees(*thresholds.gpuMax));
    if (thresholds.memoryMax) appendPart(text, "memory max " + degrees(*thresholds.memoryMax));
    return text.empty() ? "no thresholds" : text;
}

std::string gpuThrottleText(const std::optional<GpuThrottle>& throttle) {
    if (!throttle) return "unknown";
    std::string text;
    if (throttle->hwThermal) appendPart(text, "HW thermal slowdown");
    if (throttle->swThermal) appendPart(text, "SW thermal slowdown");
    if (throttle->powerBrake) appendPart(text, "HW power brake");
    return text.empty() ? "none" : text;
}

}  // namespace velmora
