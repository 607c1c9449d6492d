#include "metrics/macos/mac_backend.hpp"

#include <algorithm>

#include "metrics/macos/battery_temperature.hpp"

namespace velmora {

namespace {

std::optional<TempReading> asReading(const std::optional<NamedTemp>& temp) {
    if (!temp) return std::nullopt;
    return TempReading{temp->celsius, temp->source};
}

}  // namespace

std::optional<NamedTemp> hottestLabelled(const std::vector<NamedTemp>& temps,
                                         std::string_view label) {
    std::optional<NamedTemp> best;
    for (const NamedTemp& temp : temps) {
        if (classifyHIDName(temp.name) != label) continue;
        if (!best || temp.celsius > best->celsius) best = temp;
    }
    return best;
}

std::optional<NamedTemp> firstLabelled(const std::vector<NamedTemp>& temps,
                                       std::string_view label) {
    for (const NamedTemp& temp : temps) {
        if (classifyHIDName(temp.name) == label) return temp;
    }
    return std::nullopt;
}

void sortHottestFirst(std::vector<NamedTemp>& sensors) {
    std::stable_sort(sensors.begin(), sensors.end(),
                     [](const NamedTemp& a, const NamedTemp& b) { return a.celsius > b.celsius; });
}

MacBackend::MacBackend(MacPorts ports)
    : ports_(std::move(ports)),
      metrics_(*ports_.host),
      perCore_(*ports_.host),
      smc_(SMC::open(std::move(ports_.smc))),
      hid_(*ports_.hid) {}

void MacBackend::prime(Timestamp /*now*/) {
    (void)metrics_.cpuBusyPercent();
    (void)perCore_.sample();
}

void MacBackend::readTemperatures(LiveInputs& inputs, const std::vector<NamedTemp>& hidTemps) {
    const auto hidCPU = asReading(hottestLabelled(hidTemps, "cpu"));
    const auto hidGPU = asReading(hottestLabelled(hidTemps, "gpu"));
    inputs.cpuTemp = hidCPU;
    inputs.gpuTemp = hidGPU;
    if (smc_) {
        if (auto cpu = smc_->hottest(SMCClass::cpu)) inputs.cpuTemp = std::move(cpu);
        if (auto gpu = smc_->hottest(SMCClass::gpu)) inputs.gpuTemp = std::move(gpu);
    }
}

std::vector<NamedTemp> MacBackend::sensorList(const std::vector<NamedTemp>& hidTemps) {
    std::vector<NamedTemp> sensors;
    if (smc_) {
        for (const SMCTempKey& entry : smc_->tempKeys()) {
            const auto value = smc_->read(entry.key);
            if (!value) continue;
            const auto celsius = decodeSMCTemperature(value->type, value->bytes);
            if (!celsius || !plausibleCelsius(*celsius)) continue;
            sensors.push_back({entry.key, *celsius, "SMC " + entry.key});
        }
    }
    sensors.insert(sensors.end(), hidTemps.begin(), hidTemps.end());
    // A second registry read in the same sample, as designed.
    if (const auto battery = batteryTemperature(*ports_.registry)) {
        sensors.push_back({"Battery", battery->celsius, battery->source});
    }
    sortHottestFirst(sensors);
    return sensors;
}

LiveInputs MacBackend::sample(Timestamp /*now*/) {
    LiveInputs in;
    in.thermal = ports_.process->thermalState();
    in.cpuBusy = metrics_.cpuBusyPercent();
    const std::vector<NamedTemp> hidTemps = hid_.read();
    readTemperatures(in, hidTemps);
    in.battery = batteryInfo(*ports_.registry);
    in.memory = memoryInfo(*ports_.host);
    in.batteryTemp = batteryTemperature(*ports_.registry);
    if (!in.batteryTemp) in.batteryTemp = asReading(firstLabelled(hidTemps, "battery"));
    in.sensors = sensorList(hidTemps);
    in.load = metrics_.loadAverage();
    in.cores = ports_.process->activeProcessorCount();
    in.lowPower = ports_.process->lowPowerModeEnabled();
    in.coreLoads = perCore_.sample();
    in.gpuLoad = gpuUtilizationPercent(*ports_.registry);
    in.fans = readFans(smc_.get());
    in.power = powerReading(smc_.get(), in.battery);
    latest_ = in;
    return in;
}

}  // namespace velmora
