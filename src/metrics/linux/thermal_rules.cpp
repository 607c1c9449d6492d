#include "metrics/linux/thermal_rules.hpp"

#include <algorithm>

#include "metrics/temp_reading.hpp"

namespace velmora {

namespace {

double marginFor(std::optional<double> hysteresis) {
    return hysteresis && *hysteresis > kMinimumFall ? *hysteresis : kMinimumFall;
}

// hwmon states its hysteresis as the absolute temperature at which the alarm clears.
std::optional<double> hysteresisBelow(std::optional<double> limit, std::optional<double> clearsAt) {
    if (!limit || !clearsAt || !plausibleCelsius(*clearsAt) || *clearsAt >= *limit) {
        return std::nullopt;
    }
    return *limit - *clearsAt;
}

void addTrip(std::vector<ThermalCondition>& out, const TripPoint& trip) {
    const double c = trip.celsius;
    const double margin = marginFor(trip.hysteresis);
    if (trip.type == "passive") {
        out.push_back({ThermalState::fair, c - 10, margin});
        out.push_back({ThermalState::serious, c, margin});
    } else if (trip.type == "hot") {
        out.push_back({ThermalState::critical, c, margin});
    } else if (trip.type == "critical") {
        // The kernel powers the machine off at C itself; critical comes 5 °C before that.
        out.push_back({ThermalState::fair, c - 20, margin});
        out.push_back({ThermalState::serious, c - 10, margin});
        out.push_back({ThermalState::critical, c - 5, margin});
    }
}

}  // namespace

std::vector<ThermalCondition> zoneConditions(const std::vector<TripPoint>& trips) {
    std::vector<ThermalCondition> conditions;
    for (const TripPoint& trip : trips) {
        if (plausibleCelsius(trip.celsius)) addTrip(conditions, trip);
    }
    return conditions;
}

std::vector<ThermalCondition> hwmonConditions(const HwmonLimits& limits) {
    std::vector<ThermalCondition> conditions;
    auto plausible = [](std::optional<double> v) { return v && plausibleCelsius(*v); };
    if (plausible(limits.max)) {
        const double margin = marginFor(hysteresisBelow(limits.max, limits.maxHyst));
        conditions.push_back({ThermalState::fair, *limits.max, margin});
    }
    if (plausible(limits.crit)) {
        const double margin = marginFor(hysteresisBelow(limits.crit, limits.critHyst));
        conditions.push_back({ThermalState::fair, *limits.crit - 15, margin});
        conditions.push_back({ThermalState::serious, *limits.crit, margin});
    }
    if (plausible(limits.emergency)) {
        const double margin = marginFor(hysteresisBelow(limits.emergency, limits.emergencyHyst));
        conditions.push_back({ThermalState::critical, *limits.emergency, margin});
    }
    return conditions;
}

}  // namespace velmora
