#include "metrics/linux/sensor_class.hpp"

#include <array>

namespace velmora {

namespace {

constexpr std::array<std::string_view, 8> kCpuChips{"coretemp",    "k10temp",     "k8temp",
                                                    "zenpower",    "via_cputemp", "cpu_thermal",
                                                    "soc_thermal", "cpu-thermal"};
constexpr std::array<std::string_view, 7> kGpuChips{"amdgpu", "radeon",      "nouveau",    "i915",
                                                    "xe",     "gpu_thermal", "gpu-thermal"};
constexpr std::array<std::string_view, 2> kSsdChips{"nvme", "drivetemp"};

template <std::size_t N>
bool among(const std::array<std::string_view, N>& names, std::string_view chip) {
    for (const std::string_view name : names) {
        if (name == chip) return true;
    }
    return false;
}

}  // namespace

SensorClass classifyHwmonChip(std::string_view chip) {
    if (among(kCpuChips, chip)) return SensorClass::cpu;
    // Device-tree boards name one zone per cluster: cpu0_thermal, cpu1-thermal, …
    if (chip.starts_with("cpu") && chip.find("thermal") != std::string_view::npos) {
        return SensorClass::cpu;
    }
    if (among(kGpuChips, chip)) return SensorClass::gpu;
    if (among(kSsdChips, chip)) return SensorClass::ssd;
    // Batteries that register an hwmon device use their supply name (BAT0, BAT1).
    if (chip.starts_with("BAT") || chip == "battery") return SensorClass::battery;
    return SensorClass::other;
}

std::string_view sensorClassName(SensorClass cls) {
    switch (cls) {
        case SensorClass::cpu:
            return "cpu";
        case SensorClass::gpu:
            return "gpu";
        case SensorClass::ssd:
            return "ssd";
        case SensorClass::battery:
            return "battery";
        case SensorClass::other:
            return "other";
    }
    return "other";
}

}  // namespace velmora
