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
        thermalReadings_.push_back(slot.zone ? zoneValues_[slot.index] : hwmonValues_[slot.index]);
    }
    return deriver_.update(thermalReadings_, throttleRose());
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
