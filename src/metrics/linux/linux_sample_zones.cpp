#include <array>

#include "metrics/linux/linux_backend.hpp"

namespace velmora {

namespace {

// The CPU figure's sources, best first; ties within one go to the hottest, then the earliest.
enum CpuTier : std::size_t { cpuSensor, cpuZone, acpiZone, tierCount };

constexpr std::array<const char*, tierCount> kTierNotes{
    "",
    " (a CPU/SoC thermal zone: no CPU sensor found)",
    " (the ACPI thermal zone: no CPU sensor or CPU/SoC zone found, so it may read the board "
    "rather than the CPU)",
};

struct Pick {
    std::optional<TempReading> reading;
    std::string path;

    void offer(double celsius, const std::string& source, const std::string& file) {
        if (reading && !(celsius > reading->celsius)) return;
        reading = TempReading{celsius, source};
        path = file;
    }
};

std::optional<CpuTier> tierOf(ZoneRole role) {
    if (role == ZoneRole::cpu) return cpuZone;
    if (role == ZoneRole::acpi) return acpiZone;
    return std::nullopt;
}

}  // namespace

void LinuxBackend::addZoneSensors(LiveInputs& in) {
    const ZoneListing& listing = inv_.zoneListing;
    for (std::size_t i = 0; i < inv_.zones.size() && i < listing.listed.size(); ++i) {
        const auto& celsius = zoneValues_[i];
        if (!listing.listed[i] || !celsius || !plausibleCelsius(*celsius)) continue;
        in.sensors.push_back({listing.names[i], *celsius, listing.sources[i]});
    }
}

void LinuxBackend::chooseHeadlineTemps(LiveInputs& in) {
    const ZoneListing& listing = inv_.zoneListing;
    std::array<Pick, tierCount> cpu;
    Pick gpuZone;
    for (std::size_t i = 0; i < inv_.hwmon.temps.size() && i < listing.hwmonMirrors.size(); ++i) {
        const HwmonTemp& temp = inv_.hwmon.temps[i];
        const auto& celsius = hwmonValues_[i];
        if (!celsius || !plausibleCelsius(*celsius) || !temp.representsClass) continue;
        const auto& mirrors = listing.hwmonMirrors[i];
        std::optional<CpuTier> tier = mirrors ? tierOf(*mirrors) : std::nullopt;
        if (!mirrors && temp.cls == SensorClass::cpu) tier = cpuSensor;
        if (tier) cpu[*tier].offer(*celsius, temp.source, temp.input.path());
    }
    for (std::size_t i = 0; i < inv_.zones.size() && i < listing.listed.size(); ++i) {
        const auto& celsius = zoneValues_[i];
        if (!listing.listed[i] || !celsius || !plausibleCelsius(*celsius)) continue;
        const ZoneRole role = zoneRole(inv_.zones[i].type);
        const std::string& path = inv_.zones[i].temp.path();
        if (const auto tier = tierOf(role)) cpu[*tier].offer(*celsius, listing.sources[i], path);
        if (role == ZoneRole::gpu) gpuZone.offer(*celsius, listing.sources[i], path);
    }
    in.cpuTemp.reset();
    chosen_.cpuTemp.clear();
    chosen_.cpuTempNote.clear();
    for (std::size_t t = 0; t < tierCount; ++t) {
        if (!cpu[t].reading) continue;
        in.cpuTemp = cpu[t].reading;
        chosen_.cpuTemp = cpu[t].path;
        chosen_.cpuTempNote = kTierNotes[t];
        break;
    }
    // A board's GPU zone stands in when no GPU chip reports a temperature.
    if (!in.gpuTemp && gpuZone.reading) {
        in.gpuTemp = gpuZone.reading;
        chosen_.gpuTemp = gpuZone.path;
    }
}

}  // namespace velmora
