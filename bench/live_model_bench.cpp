// LiveModel::json of a full snapshot: every optional present, a full CPU history, per-core
// loads and a long sensor list, as the dashboard receives it once a second.
#include <benchmark/benchmark.h>

#include "metrics/live_model.hpp"

namespace {

using namespace velmora;

LiveInputs fullSnapshot() {
    LiveInputs in;
    in.thermal = ThermalState::fair;
    in.cpuBusy = 37.5;
    in.load = 3.21;
    in.cores = 16;
    in.ramUsed = 61.2;
    in.cpuTemp = TempReading{71.25, "hwmon k10temp Tdie"};
    in.gpuTemp = TempReading{64.0, "hwmon amdgpu junction"};
    in.batteryTemp = TempReading{31.4, "power_supply BAT0"};
    in.peakLevel = Level::warm;
    in.peakCpuTemp = 83.5;
    for (int i = 0; i < 60; ++i)
        in.cpuHistory.push_back(20.0 + i % 17 * 3.1);
    in.lowPower = true;
    in.coreLoads = std::vector<double>{};
    for (int i = 0; i < 16; ++i)
        in.coreLoads->push_back(i * 6.25);
    in.gpuLoad = 42.0;
    in.memory = MemoryInfo{61.2, 19.6, 32.0, "Warning"};
    in.memPressure = "Warning";
    in.fans = {{0, 1180.0, 0.0, 3300.0}, {1, 912.0, std::nullopt, std::nullopt}};
    in.power = PowerReading{18.25, "Battery discharge", "power_supply BAT0"};
    in.battery = BatteryInfo{87, false, true, -1520.0, 12010.0};
    for (int i = 0; i < 24; ++i) {
        const std::string name = "nct6798 Sensor " + std::to_string(i);
        in.sensors.push_back({name, 30.0 + i, "hwmon " + name});
    }
    return in;
}

void BM_LiveModelJson(benchmark::State& state) {
    const LiveInputs in = fullSnapshot();
    std::size_t bytes = 0;
    for (auto _ : state) {
        const std::string text = LiveModel::json(in);
        bytes = text.size();
        benchmark::DoNotOptimize(text.data());
    }
    state.counters["json_bytes"] = static_cast<double>(bytes);
}
BENCHMARK(BM_LiveModelJson)->Unit(benchmark::kMicrosecond);

void BM_LiveModelDictionary(benchmark::State& state) {
    const LiveInputs in = fullSnapshot();
    for (auto _ : state)
        benchmark::DoNotOptimize(LiveModel::dictionary(in));
}
BENCHMARK(BM_LiveModelDictionary)->Unit(benchmark::kMicrosecond);

}  // namespace
