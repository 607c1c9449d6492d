#pragma once

#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "metrics/linux/power_supply.hpp"
#include "metrics/system_records.hpp"

namespace velmora {

/// The status words the kernel documents for a battery; any other text reads as "Unknown".
std::string batteryStatusWord(std::string_view status);

/// One pack's figures; its energy comes from energy_* or, failing that, from charge_* times the
/// design voltage (or the present voltage).
BatteryPack batteryPackFromRaw(const std::string& name, const BatteryRaw& raw,
                               std::optional<long long> voltageMinDesignMicrovolts);

/// Whether the machine runs from its batteries: one of them discharging, or AC reported
/// offline. Statuses such as "Unknown", "Not charging" and "Full", which laptops report on AC,
/// never count. Absent when nothing says either way.
std::optional<bool> runningOnBattery(const std::vector<BatteryPack>& packs,
                                     std::optional<bool> acOnline);

/// The packs as one battery: percent weighted by energy (the plain mean when a pack's energy
/// is unknown), charging only while on AC, current summed, AC as `runningOnBattery` says.
BatteryInfo combineBatteries(const std::vector<BatteryPack>& packs, std::optional<bool> acOnline);

/// The packs' own power figures as one: the sum, sourced "power_supply BAT0 + BAT1".
std::optional<PowerReading> combinedBatteryPower(const std::vector<PowerReading>& packPowers);

}  // namespace velmora
