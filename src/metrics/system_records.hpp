#pragma once

#include <optional>
#include <string>

namespace velmora {

struct MemoryInfo {
    double usedPercent = 0.0;
    double usedGB = 0.0;
    double totalGB = 0.0;
    /// "Normal", "Warning" or "Critical"; absent when the platform does not say.
    std::optional<std::string> pressure{};

    bool operator==(const MemoryInfo&) const = default;
};

struct FanReading {
    int index = 0;
    double rpm = 0.0;
    std::optional<double> minRPM{};
    std::optional<double> maxRPM{};

    bool operator==(const FanReading&) const = default;
};

struct PowerReading {
    double watts = 0.0;
    std::string label;
    std::string source;

    bool operator==(const PowerReading&) const = default;
};

struct BatteryInfo {
    std::optional<int> percent{};
    std::optional<bool> charging{};
    std::optional<bool> onAC{};
    /// Milliamperes, negative while discharging.
    std::optional<double> amperageMA{};
    std::optional<double> voltageMV{};

    bool operator==(const BatteryInfo&) const = default;
};

/// A fan speed worth showing: 0 ≤ rpm < 20000.
bool plausibleRPM(double rpm);

/// The battery's own power figure, when its current and voltage make sense together:
/// "Battery discharge" or "Battery charge" with the given source.
std::optional<PowerReading> batteryPower(const BatteryInfo& battery, const std::string& source);

}  // namespace velmora
