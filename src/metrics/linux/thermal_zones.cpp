#include "metrics/linux/thermal_zones.hpp"

#include "metrics/linux/hwmon.hpp"
#include "metrics/linux/sysfs_dir.hpp"
#include "metrics/linux/utf8_text.hpp"

namespace velmora {

namespace {

std::optional<long long> integerIn(const std::string& path) {
    const auto text = readSmallFile(path);
    return text ? parseInteger(*text) : std::nullopt;
}

std::vector<TripPoint> tripsOf(const std::string& dir) {
    std::vector<TripPoint> trips;
    for (const int n : numberedFiles(dir, "trip_point_", "_type")) {
        const std::string base = dir + "/trip_point_" + std::to_string(n);
        const auto type = readSmallFile(base + "_type");
        const auto milli = integerIn(base + "_temp");
        if (!type || !milli) continue;
        const auto hyst = integerIn(base + "_hyst");
        trips.push_back({std::string(trimmed(*type)), fromMillidegrees(*milli),
                         hyst ? std::optional(fromMillidegrees(*hyst)) : std::nullopt});
    }
    return trips;
}

}  // namespace

std::vector<ThermalZone> discoverThermalZones(const std::string& root) {
    std::vector<ThermalZone> zones;
    const std::string classDir = root + "/sys/class/thermal";
    for (const std::string& entry : listEntries(classDir, "thermal_zone")) {
        const std::string dir = childPath(classDir, entry);
        auto temp = SysfsFile::open(dir + "/temp");
        if (!temp || !temp->readInteger()) continue;
        const auto type = readSmallFile(dir + "/type");
        zones.push_back(
            {entry, type ? validUtf8(trimmed(*type)) : entry, std::move(*temp), tripsOf(dir)});
    }
    return zones;
}

std::vector<SysfsFile> discoverThrottleCounters(const std::string& root) {
    std::vector<SysfsFile> counters;
    const std::string cpuDir = root + "/sys/devices/system/cpu";
    for (const std::string& cpu : listEntries(cpuDir, "cpu")) {
        const std::string dir = childPath(childPath(cpuDir, cpu), "thermal_throttle");
        for (const char* name : {"/core_throttle_count", "/package_throttle_count"}) {
            auto counter = SysfsFile::open(dir + name);
            if (counter && counter->readInteger()) counters.push_back(std::move(*counter));
        }
    }
    return counters;
}

}  // namespace velmora
