#pragma once

// What any sample of the Linux backend must satisfy, whatever its files said.

#include <algorithm>
#include <cmath>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <string>

#include "fuzz_support.hpp"
#include "metrics/linux/sysfs_file.hpp"
#include "metrics/live_inputs.hpp"
#include "metrics/metrics_backend.hpp"
#include "utf8_reference.hpp"

namespace velmora::fuzz {

inline bool isPercent(const std::optional<double>& value) {
    return !value || (*value >= 0.0 && *value <= 100.0);
}

inline void checkText(std::string_view text) {
    require(wellFormedUtf8(text), "every text of a sample is valid UTF-8");
}

inline void checkReading(const std::optional<TempReading>& reading) {
    if (!reading) return;
    require(plausibleCelsius(reading->celsius), "a chosen temperature is plausible");
    require(!reading->source.empty(), "a chosen temperature names its source");
    checkText(reading->source);
}

inline void checkSensors(const LiveInputs& in) {
    for (const NamedTemp& sensor : in.sensors) {
        require(plausibleCelsius(sensor.celsius), "a listed sensor is plausible");
        checkText(sensor.name);
        checkText(sensor.source);
    }
    require(std::is_sorted(in.sensors.begin(), in.sensors.end(),
                           [](const auto& a, const auto& b) { return a.celsius > b.celsius; }),
            "sensors are listed hottest first");
}

inline void checkMemory(const std::optional<MemoryInfo>& memory) {
    if (!memory) return;
    require(isPercent(memory->usedPercent), "memory in use is a percentage");
    require(std::isfinite(memory->usedGB) && std::isfinite(memory->totalGB) &&
                memory->usedGB <= memory->totalGB,
            "memory in use is part of a finite total");
    if (memory->pressure) {
        const std::string& p = *memory->pressure;
        require(p == "Normal" || p == "Warning" || p == "Critical", "a known memory pressure");
    }
}

inline void checkFansAndPower(const LiveInputs& in) {
    for (const FanReading& fan : in.fans) {
        require(plausibleRPM(fan.rpm), "a fan speed is plausible");
        require(!fan.minRPM || plausibleRPM(*fan.minRPM), "a fan minimum is plausible");
        require(!fan.maxRPM || plausibleRPM(*fan.maxRPM), "a fan maximum is plausible");
    }
    if (in.power) {
        require(std::isfinite(in.power->watts) && in.power->watts > 0 && in.power->watts < 2000,
                "power is a believable number of watts");
        checkText(in.power->label);
        checkText(in.power->source);
    }
}

inline void checkBattery(const std::optional<BatteryInfo>& battery) {
    if (!battery) return;
    require(!battery->percent || (*battery->percent >= 0 && *battery->percent <= 100),
            "battery charge is a percentage");
    require(!battery->amperageMA || std::isfinite(*battery->amperageMA), "a finite current");
    require(!battery->voltageMV || (std::isfinite(*battery->voltageMV) && *battery->voltageMV > 0),
            "a positive, finite voltage");
}

inline void checkPowerSourcesAndPacks(const LiveInputs& in) {
    for (const PowerReading& power : in.powerSources) {
        require(std::isfinite(power.watts) && power.watts > 0 && power.watts < 2000,
                "every listed power figure is a believable number of watts");
        checkText(power.label);
        checkText(power.source);
    }
    for (const BatteryPack& pack : in.batteries) {
        checkBattery(pack.info);
        checkText(pack.name);
        checkText(pack.source);
        if (pack.status) {
            const std::string& s = *pack.status;
            require(s == "Unknown" || s == "Charging" || s == "Discharging" ||
                        s == "Not charging" || s == "Full",
                    "a battery status is one the kernel documents");
        }
    }
    require(in.batteries.empty() == !in.battery, "a combined battery exactly when there are packs");
}

inline std::string fileText(const std::filesystem::path& file) {
    std::ifstream in(file, std::ios::binary);
    return {std::istreambuf_iterator<char>(in), {}};
}

inline void checkLowPower(const LiveInputs& in, const std::filesystem::path& root) {
    if (!in.lowPower) return;
    // power-profiles-daemon is asked over D-Bus, never through its state file in the tree.
    const std::string profile = fileText(root / "sys/firmware/acpi/platform_profile");
    require(trimmed(profile) == "low-power",
            "in a tree, low power mode comes from the platform profile");
}

inline void checkLinuxSample(const LiveInputs& in, const std::filesystem::path& root) {
    require(static_cast<int>(in.thermal) >= 0 && static_cast<int>(in.thermal) <= 3,
            "the derived thermal state is one of the four");
    require(isPercent(in.cpuBusy) && isPercent(in.ramUsed) && isPercent(in.gpuLoad),
            "loads are percentages");
    require(!in.load || (std::isfinite(*in.load) && *in.load >= 0), "a finite load average");
    require(in.cores >= 1, "a machine has a processor");
    if (in.coreLoads) {
        require(std::all_of(in.coreLoads->begin(), in.coreLoads->end(),
                            [](double load) { return load >= 0.0 && load <= 100.0; }),
                "per-core loads are percentages");
    }
    checkReading(in.cpuTemp);
    checkReading(in.gpuTemp);
    checkReading(in.batteryTemp);
    checkSensors(in);
    checkMemory(in.memory);
    checkFansAndPower(in);
    checkBattery(in.battery);
    checkPowerSourcesAndPacks(in);
    checkLowPower(in, root);
}

inline void checkLinuxSummary(const std::string& summary, const MetricSources& sources) {
    checkText(summary);
    for (const std::string* source :
         {&sources.thermal, &sources.cpuBusy, &sources.perCore, &sources.load, &sources.memory,
          &sources.memPressure, &sources.cpuTemp, &sources.gpuTemp, &sources.batteryTemp,
          &sources.gpuLoad, &sources.fans, &sources.power}) {
        checkText(*source);
    }
    for (const std::string& file : sources.powerFiles)
        checkText(file);
}

}  // namespace velmora::fuzz
