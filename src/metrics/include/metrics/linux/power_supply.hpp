#pragma once

#include <optional>
#include <string>
#include <vector>

#include "metrics/linux/sysfs_file.hpp"
#include "metrics/system_records.hpp"
#include "metrics/temp_reading.hpp"

namespace velmora {

/// The system battery's attribute files (power_supply of type Battery, not a device's own).
struct BatteryFiles {
    std::string name;
    std::optional<SysfsFile> capacity;
    std::optional<SysfsFile> status;
    std::optional<SysfsFile> currentNow;
    std::optional<SysfsFile> powerNow;
    std::optional<SysfsFile> voltageNow;
    std::optional<SysfsFile> temp;
    std::optional<SysfsFile> energyNow;
    std::optional<SysfsFile> energyFull;
    std::optional<SysfsFile> chargeNow;
    std::optional<SysfsFile> chargeFull;
    /// Microvolts; fixed by the pack, so read once. Turns charge into energy.
    std::optional<long long> voltageMinDesign;
};

struct PowerSupplies {
    /// Every system battery, in the kernel's order (BAT0 before BAT1).
    std::vector<BatteryFiles> batteries;
    /// The `online` files of the mains and USB supplies.
    std::vector<SysfsFile> acOnline;
    std::vector<std::string> acNames;
};

PowerSupplies discoverPowerSupplies(const std::string& root);

/// One reading of a battery's attributes, as the kernel printed them.
struct BatteryRaw {
    std::optional<long long> capacity;
    std::optional<std::string> status;
    std::optional<long long> currentMicroamps;
    std::optional<long long> powerMicrowatts;
    std::optional<long long> voltageMicrovolts;
    std::optional<long long> energyNow;
    std::optional<long long> energyFull;
    std::optional<long long> chargeNow;
    std::optional<long long> chargeFull;
};

/// Percent (capacity, else energy or charge ratio), charging, current with its sign from the
/// status (or from power ÷ voltage), voltage in millivolts. `onAC` is set by the caller.
BatteryInfo batteryFromRaw(const BatteryRaw& raw);

/// The battery's `temp` attribute is in tenths of a degree Celsius.
std::optional<TempReading> batteryTempFromTenths(std::optional<long long> tenths,
                                                 const std::string& batteryName);

}  // namespace velmora
