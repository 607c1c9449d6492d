#include "metrics/linux/zone_sensors.hpp"

#include <algorithm>
#include <cctype>
#include <filesystem>
#include <system_error>

namespace velmora {

namespace {

namespace fs = std::filesystem;

struct Place {
    std::optional<fs::path> self;
    std::optional<fs::path> device;
};

std::optional<fs::path> resolved(const fs::path& path) {
    std::error_code error;
    fs::path real = fs::canonical(path, error);
    if (error) return std::nullopt;
    return real;
}

Place placeOf(const fs::path& dir) {
    return Place{resolved(dir), resolved(dir / "device")};
}

std::string lowered(std::string_view text) {
    std::string out(text);
    std::transform(out.begin(), out.end(), out.begin(),
                   [](unsigned char c) { return static_cast<char>(std::tolower(c)); });
    return out;
}

// hwmon names may not hold '-', so the kernel's mirror of "cpu-thermal" is "cpu_thermal".
std::string mirrorName(std::string_view zoneType) {
    std::string name(zoneType);
    std::replace(name.begin(), name.end(), '-', '_');
    return name;
}

bool same(const std::optional<fs::path>& a, const std::optional<fs::path>& b) {
    return a && b && *a == *b;
}

bool parentIs(const std::optional<fs::path>& child, const std::optional<fs::path>& parent) {
    return child && parent && child->parent_path() == *parent;
}

// The kernel's own mirror of a zone: its device, or its parent directory, is the zone.
bool kernelMirror(const Place& chip, const Place& zone) {
    return same(chip.device, zone.self) || parentIs(chip.self, zone.self);
}

// A driver that registered its zone under its hwmon chip, or both for one device.
bool sameSensor(const Place& chip, const Place& zone) {
    return same(zone.device, chip.self) || parentIs(zone.self, chip.self) ||
           same(chip.device, zone.device);
}

std::string zoneDirOf(const ThermalZone& zone) {
    return fs::path(zone.temp.path()).parent_path().string();
}

void nameZones(ZoneListing& listing, const std::vector<ThermalZone>& zones) {
    for (std::size_t i = 0; i < zones.size(); ++i) {
        const bool repeated = std::count_if(zones.begin(), zones.end(), [&](const ThermalZone& z) {
                                  return z.type == zones[i].type;
                              }) > 1;
        std::string name = repeated ? zones[i].type + " (" + zones[i].zone + ")" : zones[i].type;
        listing.sources.push_back("thermal " + name);
        listing.names.push_back(std::move(name));
    }
}

}  // namespace

ZoneRole zoneRole(std::string_view type) {
    const std::string t = lowered(type);
    if (t == "acpitz") return ZoneRole::acpi;
    if (t.find("gpu") != std::string::npos) return ZoneRole::gpu;
    // "bigcore0-thermal" and "cluster1-thermal" name CPU clusters on big.LITTLE boards.
    for (const char* cpuWord : {"cpu", "soc", "pkg_temp", "core", "cluster"}) {
        if (t.find(cpuWord) != std::string::npos) return ZoneRole::cpu;
    }
    return ZoneRole::other;
}

ZoneListing listZones(const std::vector<ThermalZone>& zones, const HwmonInventory& hwmon) {
    ZoneListing listing;
    listing.listed.assign(zones.size(), true);
    nameZones(listing, zones);
    std::vector<Place> zonePlaces;
    zonePlaces.reserve(zones.size());
    for (const ThermalZone& zone : zones)
        zonePlaces.push_back(placeOf(zoneDirOf(zone)));

    std::vector<std::optional<ZoneRole>> chipMirrors;
    for (const HwmonChip& chip : hwmon.chips) {
        const Place place = placeOf(chip.dir);
        std::optional<ZoneRole> mirrored;
        for (std::size_t z = 0; z < zones.size(); ++z) {
            const bool byName = !place.device && chip.name == mirrorName(zones[z].type);
            const bool kernel = byName || kernelMirror(place, zonePlaces[z]);
            if (!kernel && !sameSensor(place, zonePlaces[z])) continue;
            mirrored = zoneRole(zones[z].type);
            for (std::size_t k = 0; k < zones.size(); ++k) {
                // The kernel's mirror carries one temperature for every zone of its type.
                if (k == z || (kernel && zones[k].type == zones[z].type)) listing.listed[k] = false;
            }
        }
        chipMirrors.push_back(mirrored);
    }
    for (const HwmonTemp& temp : hwmon.temps) {
        const std::string dir = fs::path(temp.input.path()).parent_path().string();
        std::optional<ZoneRole> role;
        for (std::size_t c = 0; c < hwmon.chips.size(); ++c) {
            if (hwmon.chips[c].dir == dir) role = chipMirrors[c];
        }
        listing.hwmonMirrors.push_back(role);
    }
    return listing;
}

}  // namespace velmora
