#pragma once

#include <optional>
#include <string>
#include <vector>

#include "policy/thermal_state.hpp"

namespace velmora {

/// One rule of the derived thermal state: at or above `threshold` the source stands at
/// `level`; once there it falls back only when the temperature is `margin` below it.
struct ThermalCondition {
    ThermalState level = ThermalState::nominal;
    double threshold = 0.0;
    double margin = 0.0;

    bool operator==(const ThermalCondition&) const = default;
};

/// A thermal zone's trip point: its type ("passive", "hot", "critical", "active"), its
/// temperature and the kernel's own hysteresis, in degrees Celsius.
struct TripPoint {
    std::string type;
    double celsius = 0.0;
    std::optional<double> hysteresis{};
};

/// An hwmon temperature's limits (absolute degrees Celsius, hysteresis values included).
struct HwmonLimits {
    std::optional<double> max{};
    std::optional<double> maxHyst{};
    std::optional<double> crit{};
    std::optional<double> critHyst{};
    std::optional<double> emergency{};
    std::optional<double> emergencyHyst{};
};

/// The least a temperature must fall below the threshold that raised a state.
inline constexpr double kMinimumFall = 3.0;

/// Passive trip P: fair at P - 10, serious at P. Hot trip H: critical at H. Critical trip C:
/// fair at C - 20, serious at C - 10, critical at C - 5. Implausible trips are ignored.
std::vector<ThermalCondition> zoneConditions(const std::vector<TripPoint>& trips);

/// Max M: fair. Crit K: fair at K - 15, serious at K. Emergency E: critical.
std::vector<ThermalCondition> hwmonConditions(const HwmonLimits& limits);

}  // namespace velmora
