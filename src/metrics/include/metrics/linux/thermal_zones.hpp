#pragma once

#include <string>
#include <vector>

#include "metrics/linux/sysfs_file.hpp"
#include "metrics/linux/thermal_rules.hpp"

namespace velmora {

/// A kernel thermal zone with the trip points that judge it.
struct ThermalZone {
    /// "thermal_zone0".
    std::string zone;
    /// The zone's type ("acpitz", "x86_pkg_temp", "cpu-thermal").
    std::string type;
    SysfsFile temp;
    std::vector<TripPoint> trips;
};

/// Every zone under <root>/sys/class/thermal whose temperature reads now.
std::vector<ThermalZone> discoverThermalZones(const std::string& root);

/// The CPU throttle counters of Intel's thermal_throttle directories.
std::vector<SysfsFile> discoverThrottleCounters(const std::string& root);

}  // namespace velmora
