#include "app/fleet/fleet_metrics.hpp"

#include <algorithm>
#include <array>
#include <cmath>
#include <map>
#include <tuple>

#include "app/fleet/prometheus_text.hpp"
#include "metrics/live_names.hpp"
#include "metrics/sensor_kind.hpp"

namespace velmora {

namespace {

constexpr std::array<ThermalState, 4> kStates{ThermalState::nominal, ThermalState::fair,
                                              ThermalState::serious, ThermalState::critical};

double flag(bool value) {
    return value ? 1.0 : 0.0;
}

std::optional<double> ratio(std::optional<double> percent) {
    return percent ? std::optional(*percent / 100.0) : std::nullopt;
}

// Sorted by source and name, so that two sensors with the same name and source (two drives of
// one kind) keep their numbers from sample to sample as long as their temperatures keep order.
void addTemperatures(PrometheusText& out, const std::vector<NamedTemp>& sensors) {
    out.family("velmora_sensor_temperature_celsius", "gauge",
               "Temperature of each sensor, in degrees Celsius.");
    std::vector<const NamedTemp*> sorted;
    sorted.reserve(sensors.size());
    for (const NamedTemp& sensor : sensors)
        sorted.push_back(&sensor);
    std::stable_sort(sorted.begin(), sorted.end(), [](const NamedTemp* a, const NamedTemp* b) {
        return std::tie(a->source, a->name) < std::tie(b->source, b->name);
    });
    std::map<std::pair<std::string, std::string>, int> seen;
    for (const NamedTemp* sensor : sorted) {
        const int n = ++seen[{sensor->source, sensor->name}];
        const std::string name = n == 1 ? sensor->name : sensor->name + " #" + std::to_string(n);
        out.sample(
            sensor->celsius,
            {{"sensor", name}, {"kind", sensorKind(sensor->source)}, {"source", sensor->source}});
    }
}

void addLimits(PrometheusText& out, const std::vector<ThermalLimit>& limits) {
    out.family("velmora_thermal_limit_celsius", "gauge",
               "Threshold at which a source raises the derived thermal state, in degrees Celsius.");
    std::map<std::pair<std::string, std::string>, bool> seen;
    for (const ThermalLimit& limit : limits) {
        // One rule per state and source; a second one for the same pair would be a duplicate.
        if (!seen.emplace(std::pair{limit.source, limit.state}, true).second) continue;
        out.sample(limit.celsius, {{"source", limit.source}, {"state", limit.state}});
    }
}

void addStates(PrometheusText& out, const LiveInputs& live, const WatchdogFigures& watchdog) {
    out.family("velmora_heat_level", "gauge",
               "The watchdog's level: 0 NORMAL, 1 WARM, 2 HOT, 3 EXTREME HEAT, 4 EMERGENCY.");
    out.sample(watchdog.level ? std::optional<double>(*watchdog.level) : std::nullopt);
    out.family("velmora_thermal_state", "gauge",
               "1 for the current thermal state, 0 for the others.");
    for (const ThermalState state : kStates) {
        out.sample(flag(live.thermal == state),
                   {{"state", std::string(thermalStateName(state).value_or(""))}});
    }
    out.family("velmora_thermal_state_forced", "gauge",
               "1 when the thermal state is forced for a test.");
    out.sample(flag(live.forced));
}

// Left out while there is no critical ETA, like every absent figure.
void addForecast(PrometheusText& out, const LiveInputs& live) {
    out.family("velmora_critical_eta_seconds", "gauge",
               "Forecast seconds until the hottest source reaches its critical limit; advisory.");
    if (live.forecast && live.forecast->kind == ForecastKind::critical && live.forecast->eta) {
        out.sample(std::round(live.forecast->eta->count()));
    }
}

// Only above NORMAL, where the heat cause is measured; names are label values, escaped there.
void addBusiestProcesses(PrometheusText& out, const LiveInputs& live) {
    out.family("velmora_busiest_process_cores", "gauge",
               "CPU used by each of the busiest processes since the heat rose, in cores.");
    if (!live.heatCause) return;
    for (const ProcessShare& process : live.heatCause->processes) {
        out.sample(process.percent / 100.0,
                   {{"process", process.name}, {"pid", std::to_string(process.pid)}});
    }
}

void addFansAndPower(PrometheusText& out, const LiveInputs& live) {
    out.family("velmora_fan_speed_rpm", "gauge", "Speed of each fan, in revolutions per minute.");
    for (const FanReading& fan : live.fans)
        out.sample(fan.rpm, {{"fan", std::to_string(fan.index)}});
    out.family("velmora_power_watts", "gauge", "Power figure of the machine, in watts.");
    if (live.power) {
        out.sample(live.power->watts,
                   {{"label", live.power->label}, {"source", live.power->source}});
    }
}

void addCpuAndMemory(PrometheusText& out, const LiveInputs& live) {
    out.family("velmora_cpu_busy_ratio", "gauge", "Share of CPU time spent busy, 0 to 1.");
    out.sample(ratio(live.cpuBusy));
    out.family("velmora_cpu_core_busy_ratio", "gauge", "Share of each core's time spent busy.");
    if (live.coreLoads) {
        for (std::size_t i = 0; i < live.coreLoads->size(); ++i)
            out.sample((*live.coreLoads)[i] / 100.0, {{"core", std::to_string(i)}});
    }
    out.family("velmora_gpu_busy_ratio", "gauge", "Share of the busiest GPU's time spent busy.");
    out.sample(ratio(live.gpuLoad));
    out.family("velmora_load_average", "gauge", "One-minute load average.");
    out.sample(live.load);
}

void addMemoryAndBattery(PrometheusText& out, const LiveInputs& live) {
    constexpr double kBytesPerGiB = 1024.0 * 1024.0 * 1024.0;
    const auto& memory = live.memory;
    out.family("velmora_memory_used_bytes", "gauge", "Memory in use, in bytes.");
    out.sample(memory ? std::optional(memory->usedGB * kBytesPerGiB) : std::nullopt);
    out.family("velmora_memory_total_bytes", "gauge", "Memory installed, in bytes.");
    out.sample(memory ? std::optional(memory->totalGB * kBytesPerGiB) : std::nullopt);
    const auto& battery = live.battery;
    out.family("velmora_battery_charge_ratio", "gauge", "Battery charge, 0 to 1.");
    if (battery && battery->percent) out.sample(*battery->percent / 100.0);
    out.family("velmora_battery_charging", "gauge", "1 while the battery charges.");
    if (battery && battery->charging) out.sample(flag(*battery->charging));
    out.family("velmora_on_ac_power", "gauge", "1 while the machine runs on mains power.");
    if (battery && battery->onAC) out.sample(flag(*battery->onAC));
    out.family("velmora_low_power_mode", "gauge", "1 while a power-saving profile is active.");
    out.sample(flag(live.lowPower));
}

void addWatchdog(PrometheusText& out, const WatchdogFigures& watchdog, Timestamp sampledAt) {
    out.family("velmora_auto_shutdown_enabled", "gauge",
               "1 when automatic shutdown in an emergency is switched on.");
    out.sample(flag(watchdog.autoShutdown));
    out.family("velmora_consent_recorded", "gauge",
               "1 when the user's consent to automatic shutdown is recorded.");
    out.sample(flag(watchdog.consentRecorded));
    out.family("velmora_countdown_remaining_seconds", "gauge",
               "Seconds left before the shutdown, while a countdown runs.");
    if (watchdog.countdownRemaining) {
        out.sample(static_cast<double>(*watchdog.countdownRemaining));
    }
    out.family("velmora_emergencies_total", "counter", "Emergencies since the watchdog started.");
    out.sample(static_cast<double>(watchdog.emergencies));
    out.family("velmora_countdowns_total", "counter", "Shutdown countdowns since the start.");
    out.sample(static_cast<double>(watchdog.countdowns));
    out.family("velmora_shutdown_calls_total", "counter",
               "Times the shutdown mechanism was asked to power off since the start.");
    out.sample(static_cast<double>(watchdog.shutdownCalls));
    out.family("velmora_last_sample_timestamp_seconds", "gauge",
               "When these figures were sampled, in seconds since the Unix epoch.");
    out.sample(sampledAt.secondsSinceEpoch);
}

}  // namespace

std::string fleetMetricsText(const LiveInputs& live, const WatchdogFigures& watchdog,
                             const std::vector<ThermalLimit>& limits, Timestamp sampledAt) {
    PrometheusText out;
    addTemperatures(out, live.sensors);
    addLimits(out, limits);
    addStates(out, live, watchdog);
    addForecast(out, live);
    addBusiestProcesses(out, live);
    addFansAndPower(out, live);
    addCpuAndMemory(out, live);
    addMemoryAndBattery(out, live);
    addWatchdog(out, watchdog, sampledAt);
    return out.text();
}

}  // namespace velmora
