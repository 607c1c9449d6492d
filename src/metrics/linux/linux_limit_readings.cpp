#include <algorithm>

#include "metrics/linux/linux_backend.hpp"
#include "metrics/temp_reading.hpp"

namespace velmora {

namespace {

std::optional<double> criticalLimit(const ThermalSourceDef& def) {
    std::optional<double> limit;
    for (const ThermalCondition& condition : def.conditions) {
        if (condition.level != ThermalState::critical) continue;
        limit = limit ? std::min(*limit, condition.threshold) : condition.threshold;
    }
    return limit;
}

std::string roleLabel(ZoneRole role, const std::string& fallback) {
    if (role == ZoneRole::cpu) return "CPU";
    if (role == ZoneRole::gpu) return "GPU";
    return fallback;
}

}  // namespace

// What people call the source: its class where it has one, else its own name.
std::string LinuxBackend::limitLabel(const ThermalSlot& slot) const {
    switch (slot.kind) {
        case SlotKind::gpu:
            return "GPU";
        case SlotKind::hwmon: {
            const HwmonTemp& temp = inv_.hwmon.temps.at(slot.index);
            if (temp.cls == SensorClass::cpu) return "CPU";
            if (temp.cls == SensorClass::gpu) return "GPU";
            return temp.name;
        }
        case SlotKind::zone: {
            const std::string& type = inv_.zones.at(slot.index).type;
            const auto& names = inv_.zoneListing.names;
            return roleLabel(zoneRole(type), slot.index < names.size() ? names[slot.index] : type);
        }
    }
    return "sensor";
}

std::vector<LimitReading> LinuxBackend::limitReadings() const {
    std::vector<LimitReading> readings;
    const std::size_t count =
        std::min({thermalSlots_.size(), thermalReadings_.size(), deriver_.sourceCount()});
    for (std::size_t i = 0; i < count; ++i) {
        const auto& celsius = thermalReadings_[i];
        if (!celsius || !plausibleCelsius(*celsius)) continue;
        const ThermalSourceDef& def = deriver_.sourceDef(i);
        const auto limit = criticalLimit(def);
        if (!limit) continue;
        readings.push_back({def.id, limitLabel(thermalSlots_[i]), *celsius, *limit});
    }
    return readings;
}

}  // namespace velmora
