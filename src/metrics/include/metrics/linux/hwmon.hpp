#pragma once

#include <cstddef>
#include <cstdint>
#include <optional>
#include <string>
#include <vector>

#include "metrics/linux/sensor_class.hpp"
#include "metrics/linux/sysfs_file.hpp"
#include "metrics/linux/thermal_rules.hpp"

namespace velmora {

/// One hwmon temperature input, opened at discovery.
struct HwmonTemp {
    std::string chip;
    /// The driver's label ("Package id 0"), or "tempN" without one.
    std::string label;
    SensorClass cls = SensorClass::other;
    /// False for a reading that another one on the same chip describes better (k10temp's
    /// offset Tctl beside Tdie); it stays in the sensor list but never becomes the CPU value.
    bool representsClass = true;
    SysfsFile input;
    HwmonLimits limits;
    /// "chip label" and "hwmon chip label", built once so that a sample does not rebuild them.
    std::string name;
    std::string source;
};

struct HwmonFan {
    std::string chip;
    SysfsFile input;
    std::optional<double> minRPM;
    std::optional<double> maxRPM;
};

struct HwmonChip {
    std::string dir;
    std::string name;
    int temps = 0;
    int fans = 0;
};

struct HwmonInventory {
    std::vector<HwmonChip> chips;
    std::vector<HwmonTemp> temps;
    std::vector<HwmonFan> fans;
    /// Paths of inputs that read but were not kept open for want of descriptors.
    std::vector<std::string> leftOut;
};

class FilePool;

/// Every chip under <root>/sys/class/hwmon with the inputs that read now. Files still open in
/// `pool` are taken over instead of opened again. With more inputs than `descriptors`, the
/// temperatures with an emergency limit come first, then the hottest, then the fans; the rest
/// are listed in `leftOut`.
HwmonInventory discoverHwmon(const std::string& root, FilePool* pool = nullptr,
                             std::size_t descriptors = SIZE_MAX);

/// Degrees Celsius from the kernel's millidegrees.
inline double fromMillidegrees(long long milli) {
    return static_cast<double>(milli) / 1000.0;
}

}  // namespace velmora
