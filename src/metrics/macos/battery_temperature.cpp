#include "metrics/macos/battery_temperature.hpp"

namespace velmora {

std::optional<TempReading> batteryTemperature(IORegistry& registry) {
    const auto battery = registry.firstMatching("AppleSmartBattery");
    if (!battery) return std::nullopt;
    const auto property = battery->property("Temperature");
    if (!property) return std::nullopt;
    const auto hundredths = registryNumber(*property);
    if (!hundredths) return std::nullopt;
    const double celsius = *hundredths / 100.0;
    if (!plausibleCelsius(celsius)) return std::nullopt;
    return TempReading{celsius, "Battery (IORegistry)"};
}

}  // namespace velmora
