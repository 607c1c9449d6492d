#pragma once

#include <string>
#include <string_view>

namespace velmora {

/// What a sensor measures ("cpu", "gpu", "ssd", "battery" or "other"), told from the source
/// its reading names ("hwmon coretemp Package id 0", "NVML …", "power_supply BAT0").
std::string sensorKind(std::string_view source);

}  // namespace velmora
