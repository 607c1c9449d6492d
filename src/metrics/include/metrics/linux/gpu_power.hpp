#pragma once

#include <optional>
#include <string>
#include <vector>

#include "metrics/linux/sysfs_file.hpp"
#include "metrics/system_records.hpp"

namespace velmora {

/// A GPU's power attribute in hwmon (microwatts): amdgpu's PPT, nouveau's power1_input.
struct GpuPowerFile {
    SysfsFile file;
    /// "hwmon amdgpu PPT": the chip and the attribute's label, else its file name.
    std::string source;
};

/// Every GPU chip under <root>/sys/class/hwmon with a readable power1_average (preferred, the
/// figure the driver smooths) or power1_input.
std::vector<GpuPowerFile> discoverGpuPower(const std::string& root);

/// The reading labelled as the GPU's; nothing for 0 or a value no GPU draws.
std::optional<PowerReading> gpuPowerReading(long long microwatts, const std::string& source);

}  // namespace velmora
