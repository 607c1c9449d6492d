#pragma once

#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "metrics/linux/hwmon.hpp"
#include "metrics/linux/thermal_zones.hpp"

namespace velmora {

/// What a thermal zone measures, by its type: the CPU or SoC ("cpu-thermal", "soc_thermal",
/// "x86_pkg_temp"), a GPU ("gpu-thermal"), the ACPI zone ("acpitz"), or something else.
enum class ZoneRole { cpu, gpu, acpi, other };

ZoneRole zoneRole(std::string_view type);

/// Which zones are sensors of their own and which hwmon temperatures merely mirror a zone.
struct ZoneListing {
    /// Per zone: shown in the sensor list (no hwmon chip reports it already).
    std::vector<bool> listed;
    /// Per zone: its name in the sensor list (the zone type, with the zone when types repeat)
    /// and its source ("thermal acpitz").
    std::vector<std::string> names;
    std::vector<std::string> sources;
    /// Per hwmon temperature: the role of the zone it mirrors; nothing for a sensor of its own.
    std::vector<std::optional<ZoneRole>> hwmonMirrors;
};

/// A zone is reported by an hwmon chip when the chip's device is the zone, the chip sits in
/// the zone's directory, the zone's device is the chip, both share a device, or (older kernels,
/// whose mirror has no device) the chip is named after the zone type. The kernel's mirror covers
/// every zone of its type.
ZoneListing listZones(const std::vector<ThermalZone>& zones, const HwmonInventory& hwmon);

}  // namespace velmora
