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

/// One of possibly several batteries (a laptop's internal and external pack).
struct BatteryPack {
    /// The supply's own name ("BAT0").
    std::string name;
    /// The kernel's status word ("Discharging", "Not charging", …); absent when unread.
    std::optional<std::string> status{};
    BatteryInfo info{};
    /// Stored and full energy in watt-hours, for weighting packs against each other.
    std::optional<double> energyNowWh{};
    std::optional<double> energyFullWh{};
    /// "power_supply BAT0".
    std::string source;

    bool operator==(const BatteryPack&) const = default;
};

/// A fan speed worth showing: 0 ≤ rpm < 20000.
bool plausibleRPM(double rpm);

/// The battery's own power figure, when its current and voltage make sense together:
/// "Battery discharge" or "Battery charge" with the given source.
std::optional<PowerReading> batteryPower(const BatteryInfo& battery, const std::string& source);

}  // namespace velmora
