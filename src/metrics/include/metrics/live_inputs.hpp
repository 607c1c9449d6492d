#pragma once

#include <optional>
#include <string>
#include <vector>

#include "metrics/heat_cause.hpp"
#include "metrics/system_records.hpp"
#include "metrics/temp_reading.hpp"
#include "policy/forecast.hpp"
#include "policy/level.hpp"
#include "policy/thermal_state.hpp"

namespace velmora {

/// One live snapshot: everything the dashboard and the menu-bar item show.
struct LiveInputs {
    ThermalState thermal = ThermalState::nominal;
    std::optional<double> cpuBusy;
    std::optional<double> load;
    int cores = 1;
    std::optional<double> ramUsed;
    std::optional<TempReading> cpuTemp;
    std::optional<TempReading> gpuTemp;
    std::optional<TempReading> batteryTemp;
    Level peakLevel = Level::ok;
    std::optional<double> peakCpuTemp;
    /// The last 60 CPU busy values, oldest first.
    std::vector<double> cpuHistory;
    bool lowPower = false;
    bool forced = false;
    std::optional<std::vector<double>> coreLoads;
    std::optional<double> gpuLoad;
    std::optional<MemoryInfo> memory;
    std::optional<std::string> memPressure;
    std::vector<FanReading> fans;
    std::optional<PowerReading> power;
    std::optional<BatteryInfo> battery;
    /// Every temperature sensor, hottest first.
    std::vector<NamedTemp> sensors;
    /// Every power figure found (CPU package, GPUs, batteries); `power` is the headline one.
    std::vector<PowerReading> powerSources;
    /// Every battery; `battery` is their combination.
    std::vector<BatteryPack> batteries;
    /// When the source nearest its critical limit will reach it; absent until the forecaster
    /// has enough readings, and where the platform states no limits.
    std::optional<Forecast> forecast;
    /// What is heating the machine; only above NORMAL, and only where processes can be read.
    std::optional<HeatCause> heatCause;

    bool operator==(const LiveInputs&) const = default;
};

}  // namespace velmora
