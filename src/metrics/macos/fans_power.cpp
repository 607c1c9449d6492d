#include <cmath>

#include "metrics/macos/system_metrics.hpp"

namespace velmora {

namespace {

std::optional<double> plausibleFanKey(SMC& smc, const std::string& key) {
    const auto rpm = smc.number(key);
    if (!rpm || !plausibleRPM(*rpm)) return std::nullopt;
    return rpm;
}

}  // namespace

std::vector<FanReading> readFans(SMC* smc) {
    std::vector<FanReading> fans;
    if (!smc) return fans;
    const auto count = smc->number("FNum");
    // More than eight fans is taken as a misread count; so is NaN (a "flt " FNum), which no
    // comparison would catch and which cannot become an int.
    if (!count || !(*count >= 1 && *count <= 8)) return fans;
    const int n = static_cast<int>(*count);
    for (int i = 0; i < n; ++i) {
        const std::string prefix = "F" + std::to_string(i);
        const auto rpm = plausibleFanKey(*smc, prefix + "Ac");
        if (!rpm) continue;
        fans.push_back(
            {i, *rpm, plausibleFanKey(*smc, prefix + "Mn"), plausibleFanKey(*smc, prefix + "Mx")});
    }
    return fans;
}

std::optional<PowerReading> powerReading(SMC* smc, const std::optional<BatteryInfo>& battery) {
    if (smc) {
        const auto watts = smc->number("PSTR");
        if (watts && *watts > 0.5 && *watts < 400.0) {
            return PowerReading{*watts, "System power", "SMC PSTR"};
        }
    }
    if (!battery) return std::nullopt;
    return batteryPower(*battery, "Battery (IORegistry)");
}

}  // namespace velmora
