#include "metrics/sensor_kind.hpp"

#if defined(__linux__)
#include "metrics/linux/sensor_class.hpp"
#endif

namespace velmora {

std::string sensorKind(std::string_view source) {
    if (source.starts_with("NVML ")) return "gpu";
    if (source.starts_with("power_supply ")) return "battery";
#if defined(__linux__)
    constexpr std::string_view hwmon = "hwmon ";
    if (source.starts_with(hwmon)) {
        source.remove_prefix(hwmon.size());
        const std::string_view chip = source.substr(0, source.find(' '));
        return std::string(sensorClassName(classifyHwmonChip(chip)));
    }
#endif
    return "other";
}

}  // namespace velmora
