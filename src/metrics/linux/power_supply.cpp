#include "metrics/linux/power_supply.hpp"

#include <cmath>

#include "metrics/linux/sysfs_dir.hpp"

namespace velmora {

namespace {

std::optional<SysfsFile> openReadable(const std::string& dir, const char* name) {
    return SysfsFile::openReadable(dir + "/" + name);
}

std::string attribute(const std::string& dir, const char* name) {
    const auto text = readSmallFile(dir + "/" + name);
    return text ? std::string(trimmed(*text)) : std::string();
}

BatteryFiles batteryFiles(const std::string& dir, const std::string& name) {
    return BatteryFiles{
        .name = name,
        .capacity = openReadable(dir, "capacity"),
        .status = openReadable(dir, "status"),
        .currentNow = openReadable(dir, "current_now"),
        .powerNow = openReadable(dir, "power_now"),
        .voltageNow = openReadable(dir, "voltage_now"),
        .temp = openReadable(dir, "temp"),
        .energyNow = openReadable(dir, "energy_now"),
        .energyFull = openReadable(dir, "energy_full"),
        .chargeNow = openReadable(dir, "charge_now"),
        .chargeFull = openReadable(dir, "charge_full"),
        .voltageMinDesign = parseInteger(attribute(dir, "voltage_min_design")),
    };
}

std::optional<int> percentOf(const BatteryRaw& raw) {
    std::optional<double> share;
    if (raw.capacity) {
        share = static_cast<double>(*raw.capacity);
    } else if (raw.energyNow && raw.energyFull && *raw.energyFull > 0) {
        share = std::round(static_cast<double>(*raw.energyNow) * 100.0 /
                           static_cast<double>(*raw.energyFull));
    } else if (raw.chargeNow && raw.chargeFull && *raw.chargeFull > 0) {
        share = std::round(static_cast<double>(*raw.chargeNow) * 100.0 /
                           static_cast<double>(*raw.chargeFull));
    }
    if (!share || *share < 0) return std::nullopt;
    return static_cast<int>(std::min(*share, 100.0));
}

// Drivers disagree on the sign of current_now; the status says which way charge flows.
std::optional<double> amperageOf(const BatteryRaw& raw) {
    std::optional<double> magnitude;
    if (raw.currentMicroamps) {
        magnitude = std::fabs(static_cast<double>(*raw.currentMicroamps)) / 1000.0;
    } else if (raw.powerMicrowatts && raw.voltageMicrovolts && *raw.voltageMicrovolts > 0) {
        magnitude = std::fabs(static_cast<double>(*raw.powerMicrowatts)) /
                    static_cast<double>(*raw.voltageMicrovolts) * 1000.0;
    }
    if (!magnitude || *magnitude > 100'000.0) return std::nullopt;
    return raw.status == "Discharging" ? -*magnitude : *magnitude;
}

}  // namespace

PowerSupplies discoverPowerSupplies(const std::string& root) {
    PowerSupplies supplies;
    const std::string classDir = root + "/sys/class/power_supply";
    for (const std::string& entry : listEntries(classDir, "")) {
        const std::string dir = childPath(classDir, entry);
        // Mice, keyboards and headsets report their own batteries with scope Device.
        if (attribute(dir, "scope") == "Device") continue;
        const std::string type = attribute(dir, "type");
        if (type == "Battery" && attribute(dir, "present") != "0") {
            supplies.batteries.push_back(batteryFiles(dir, entry));
        } else if (type == "Mains" || type.starts_with("USB")) {
            if (auto online = openReadable(dir, "online")) {
                supplies.acOnline.push_back(std::move(*online));
                supplies.acNames.push_back(entry);
            }
        }
    }
    return supplies;
}

BatteryInfo batteryFromRaw(const BatteryRaw& raw) {
    BatteryInfo info;
    info.percent = percentOf(raw);
    if (raw.status) info.charging = *raw.status == "Charging";
    info.amperageMA = amperageOf(raw);
    if (raw.voltageMicrovolts && *raw.voltageMicrovolts > 0) {
        info.voltageMV = static_cast<double>(*raw.voltageMicrovolts) / 1000.0;
    }
    return info;
}

std::optional<TempReading> batteryTempFromTenths(std::optional<long long> tenths,
                                                 const std::string& batteryName) {
    if (!tenths) return std::nullopt;
    const double celsius = static_cast<double>(*tenths) / 10.0;
    if (!plausibleCelsius(celsius)) return std::nullopt;
    return TempReading{celsius, "power_supply " + batteryName};
}

}  // namespace velmora
