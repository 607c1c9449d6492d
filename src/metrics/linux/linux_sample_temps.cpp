#include <algorithm>

#include "metrics/linux/linux_backend.hpp"

namespace velmora {

namespace {

// Hottest wins; among equal temperatures the earlier one stays.
void keepHottest(std::optional<TempReading>& best, std::string& bestPath, double celsius,
                 const std::string& source, const std::string& path) {
    if (best && !(celsius > best->celsius)) return;
    best = TempReading{celsius, source};
    bestPath = path;
}

}  // namespace

void LinuxBackend::sampleHwmonTemps(LiveInputs& in) {
    const auto& temps = inv_.hwmon.temps;
    hwmonValues_.assign(temps.size(), std::nullopt);
    std::optional<TempReading> firstBattery;
    for (std::size_t i = 0; i < temps.size(); ++i) {
        const HwmonTemp& temp = temps[i];
        const auto milli = readInteger(temp.input);
        if (!milli) continue;
        const double celsius = fromMillidegrees(*milli);
        hwmonValues_[i] = celsius;
        if (!plausibleCelsius(celsius)) continue;
        const std::string& source = temp.source;
        in.sensors.push_back({temp.name, celsius, source});
        if (!temp.representsClass) continue;
        if (temp.cls == SensorClass::cpu) {
            keepHottest(in.cpuTemp, chosen_.cpuTemp, celsius, source, temp.input.path());
        } else if (temp.cls == SensorClass::gpu) {
            keepHottest(in.gpuTemp, chosen_.gpuTemp, celsius, source, temp.input.path());
        } else if (temp.cls == SensorClass::battery && !firstBattery) {
            firstBattery = TempReading{celsius, source};
            chosen_.batteryTemp = temp.input.path();
        }
    }
    in.batteryTemp = firstBattery;
}

void LinuxBackend::sampleVendorGpus(LiveInputs& in) {
    vendorGpus_.clear();
    if (!vendorGpu_) return;
    vendorGpus_ = vendorGpu_->read();
    for (const VendorGpu& gpu : vendorGpus_) {
        if (!gpu.celsius || !plausibleCelsius(*gpu.celsius)) continue;
        const std::string source = vendorGpu_->libraryName() + " " + gpu.name;
        in.sensors.push_back({gpu.name, *gpu.celsius, source});
        keepHottest(in.gpuTemp, chosen_.gpuTemp, *gpu.celsius, source, source);
    }
    refreshGpuThermalSources();
}

void LinuxBackend::sampleTemperatures(LiveInputs& in) {
    chosen_.cpuTemp.clear();
    chosen_.gpuTemp.clear();
    chosen_.batteryTemp.clear();
    sampleHwmonTemps(in);
    sampleVendorGpus(in);
    zoneValues_.assign(inv_.zones.size(), std::nullopt);
    for (std::size_t i = 0; i < inv_.zones.size(); ++i) {
        if (const auto milli = readInteger(inv_.zones[i].temp)) {
            zoneValues_[i] = fromMillidegrees(*milli);
        }
    }
    addZoneSensors(in);
    chooseHeadlineTemps(in);
}

ThermalState LinuxBackend::deriveThermal() {
    thermalReadings_.clear();
    for (const ThermalSlot& slot : thermalSlots_) {
        thermalReadings_.push_back(slot.kind == SlotKind::zone    ? zoneValues_[slot.index]
                                   : slot.kind == SlotKind::hwmon ? hwmonValues_[slot.index]
                                                                  : gpuCelsius(slot.index));
    }
    const bool cpuThrottled = throttleRose();
    const auto gpu = throttledGpu();
    const ThermalState state =
        deriver_.update(thermalReadings_, cpuThrottled || gpu,
                        cpuThrottled ? "thermal_throttle" : gpu.value_or(""));
    noteStale();
    return state;
}

// Once per source, so that a sensor that fails now and then does not fill the log.
void LinuxBackend::noteStale() {
    for (const std::string& id : deriver_.staleIds()) {
        if (!notedStale_.insert(id).second) continue;
        const auto held = deriver_.lastPlausible(id);
        notices_.push_back("live: " + id + " did not read a plausible value; its last value" +
                           (held ? " (" + std::to_string(static_cast<int>(*held)) + " C)" : "") +
                           " and state are held, stale, for up to " +
                           std::to_string(ThermalDeriver::holdSamples) +
                           " samples (logged once per sensor)");
    }
}

bool LinuxBackend::throttleRose() {
    bool rose = false;
    const bool haveBaseline = throttleCounts_.size() == inv_.throttleCounters.size();
    throttleCounts_.resize(inv_.throttleCounters.size(), -1);
    for (std::size_t i = 0; i < inv_.throttleCounters.size(); ++i) {
        const auto count = readInteger(inv_.throttleCounters[i]);
        if (!count) continue;
        if (haveBaseline && throttleCounts_[i] >= 0 && *count > throttleCounts_[i]) rose = true;
        throttleCounts_[i] = *count;
    }
    return rose;
}

}  // namespace velmora
