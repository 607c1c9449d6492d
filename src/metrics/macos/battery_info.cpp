#include <algorithm>
#include <cmath>

#include "metrics/macos/system_metrics.hpp"

namespace velmora {

namespace {

std::optional<double> numberProperty(const RegistryEntry& entry, std::string_view key) {
    const auto value = entry.property(key);
    return value ? registryNumber(*value) : std::nullopt;
}

std::optional<bool> boolProperty(const RegistryEntry& entry, std::string_view key) {
    const auto value = entry.property(key);
    return value ? registryBool(*value) : std::nullopt;
}

// The gauge reports a negative current as an unsigned 64-bit quantity.
std::optional<double> amperage(const RegistryEntry& battery) {
    auto value = battery.property("InstantAmperage");
    if (!value || !registryNumber(*value)) value = battery.property("Amperage");
    if (!value) return std::nullopt;
    std::optional<double> ma;
    if (const auto* unsignedValue = std::get_if<std::uint64_t>(&*value)) {
        // Integer arithmetic keeps 2^64 - 1000 exact, which a double cannot.
        ma = *unsignedValue > 1'000'000'000'000'000ULL
                 ? static_cast<double>(static_cast<std::int64_t>(*unsignedValue))
                 : static_cast<double>(*unsignedValue);
    } else if (const auto number = registryNumber(*value)) {
        ma = *number > 1e15 ? *number - 18446744073709551616.0 : *number;
    }
    if (!ma || std::fabs(*ma) > 100'000.0) return std::nullopt;
    return ma;
}

std::optional<int> percent(const RegistryEntry& battery) {
    const auto current = numberProperty(battery, "CurrentCapacity");
    const auto max = numberProperty(battery, "MaxCapacity");
    if (!current || !max || *max <= 0) return std::nullopt;
    const double share = std::round(*current / *max * 100.0);
    if (std::isnan(share)) return std::nullopt;
    return static_cast<int>(std::clamp(share, 0.0, 100.0));
}

}  // namespace

std::optional<BatteryInfo> batteryInfo(IORegistry& registry) {
    const auto battery = registry.firstMatching("AppleSmartBattery");
    if (!battery) return std::nullopt;
    return BatteryInfo{
        .percent = percent(*battery),
        .charging = boolProperty(*battery, "IsCharging"),
        .onAC = boolProperty(*battery, "ExternalConnected"),
        .amperageMA = amperage(*battery),
        .voltageMV = numberProperty(*battery, "Voltage"),
    };
}

}  // namespace velmora
