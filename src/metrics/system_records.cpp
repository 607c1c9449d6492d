#include "metrics/system_records.hpp"

#include <cmath>

namespace velmora {

bool plausibleRPM(double rpm) {
    // NaN fails both comparisons.
    return rpm >= 0.0 && rpm < 20000.0;
}

std::optional<PowerReading> batteryPower(const BatteryInfo& battery, const std::string& source) {
    if (!battery.amperageMA || !battery.voltageMV) return std::nullopt;
    const double amperage = *battery.amperageMA;
    const double voltage = *battery.voltageMV;
    const double watts = std::fabs(amperage) * voltage / 1'000'000.0;
    if (!(voltage > 1000.0 && std::fabs(amperage) > 1.0 && watts < 400.0)) return std::nullopt;
    return PowerReading{
        .watts = watts,
        .label = amperage < 0 ? "Battery discharge" : "Battery charge",
        .source = source,
    };
}

}  // namespace velmora
