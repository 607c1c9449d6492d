#include "metrics/live_model.hpp"
#include "snapshot_parts.hpp"

namespace velmora::pages {

namespace {

LiveInputs busyLaptop() {
    LiveInputs in;
    in.thermal = ThermalState::serious;
    in.cpuBusy = 91.4;
    in.load = 6.2;
    in.cores = 8;
    in.ramUsed = 77.0;
    in.cpuTemp = TempReading{93.6, "hwmon coretemp Package id 0"};
    in.gpuTemp = TempReading{71.2, "hwmon amdgpu edge"};
    in.batteryTemp = TempReading{38.0, "hwmon BAT0"};
    in.peakLevel = Level::extreme;
    in.peakCpuTemp = 95.4;
    for (int i = 0; i < 60; ++i)
        in.cpuHistory.push_back(40.0 + (i % 12) * 4.5);
    in.lowPower = true;
    in.coreLoads = std::vector<double>{96.2, 88.0, 91.5, 79.9, 99.0, 64.4, 93.3, 85.1};
    in.gpuLoad = 34.0;
    in.memory = MemoryInfo{77.0, 12.3, 16.0, "Warning"};
    in.memPressure = "Warning";
    in.fans = {FanReading{1, 4200.4, 1200.0, 6000.0},
               FanReading{2, 4100.6, std::nullopt, std::nullopt}};
    in.power = PowerReading{31.25, "package", "RAPL"};
    in.battery = BatteryInfo{64, false, false, -2100.0, 11800.0};
    in.powerSources = {in.power.value(), PowerReading{32.1, "GPU power", "hwmon amdgpu PPT"},
                       PowerReading{24.78, "Battery discharge", "power_supply BAT0"}};
    in.batteries = {BatteryPack{.name = "BAT0",
                                .status = "Discharging",
                                .info = {.percent = 58},
                                .source = "power_supply BAT0"},
                    BatteryPack{.name = "BAT1",
                                .status = "Unknown",
                                .info = {.percent = 80},
                                .source = "power_supply BAT1"}};
    in.sensors = {NamedTemp{"coretemp Package id 0", 93.6, "hwmon coretemp Package id 0"},
                  NamedTemp{"amdgpu edge", 71.2, "hwmon amdgpu edge"},
                  NamedTemp{"BAT0", 38.0, "hwmon BAT0"}};
    Forecast forecast;
    forecast.kind = ForecastKind::critical;
    forecast.eta = Seconds(238.4);
    forecast.levelC = 104.2;
    forecast.source = "CPU";
    forecast.celsius = 93.6;
    forecast.limitC = 100.0;
    in.forecast = forecast;
    return in;
}

LiveInputs forcedCritical() {
    LiveInputs in;
    in.thermal = ThermalState::critical;
    in.forced = true;
    in.cores = 4;
    in.cpuBusy = 12.0;
    in.cpuHistory = {10.0, 12.0, 11.0, 12.0};
    in.battery = BatteryInfo{std::nullopt, true, true, std::nullopt, std::nullopt};
    return in;
}

// A busy laptop whose heat has a cause, one name of which is not valid UTF-8.
LiveInputs heating() {
    LiveInputs in = busyLaptop();
    HeatCause cause;
    cause.processes = {{"yes", 4242, 99.4}, {"cc1plus", 977, 35.0}, {"odd\xff name", 1201, 12.2}};
    cause.services = {{"user@1000.service/app-firefox.scope", 14.0}};
    cause.gpu = {{"blender", 77, 60.0}};
    in.heatCause = cause;
    return in;
}

}  // namespace

nlohmann::json liveSnapshots() {
    nlohmann::json out = nlohmann::json::array();
    const auto add = [&out](const char* name, const LiveInputs& in) {
        out.push_back({{"name", name}, {"live", nlohmann::json::parse(LiveModel::json(in))}});
    };
    add("model-busy-laptop", busyLaptop());
    add("model-bare", LiveInputs{});
    add("model-forced-critical", forcedCritical());
    add("model-heating", heating());
    return out;
}

}  // namespace velmora::pages
