#pragma once

#include <string_view>

namespace velmora {

/// What a temperature sensor measures, for picking the dashboard's CPU, GPU and battery values.
enum class SensorClass { cpu, gpu, ssd, battery, other };

/// The class of an hwmon chip by its driver name ("coretemp", "amdgpu", "nvme", …).
SensorClass classifyHwmonChip(std::string_view chip);

std::string_view sensorClassName(SensorClass cls);

}  // namespace velmora
