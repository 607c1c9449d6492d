// A power_supply battery's attribute files, as the sampler reads them: capacity, status,
// current_now, power_now, voltage_now, energy_now, energy_full, charge_now, charge_full and temp,
// NUL-separated (an empty piece is a missing file). Whatever the driver prints, the battery's
// figures stay within what a battery can show.

#include <cmath>
#include <cstddef>
#include <cstdint>
#include <string>

#include "fuzz_support.hpp"
#include "metrics/linux/power_supply.hpp"

namespace {

using velmora::fuzz::require;

std::optional<long long> attribute(velmora::fuzz::ByteReader& input) {
    const std::string_view text = input.takeUntil('\0');
    if (text.empty()) return std::nullopt;
    return velmora::parseInteger(text);
}

std::optional<std::string> statusLine(velmora::fuzz::ByteReader& input) {
    const std::string_view text = input.takeUntil('\0');
    if (text.empty()) return std::nullopt;
    return std::string(velmora::trimmed(text.substr(0, text.find('\n'))));
}

void checkBattery(const velmora::BatteryRaw& raw, const velmora::BatteryInfo& info) {
    if (info.percent) require(*info.percent >= 0 && *info.percent <= 100, "charge is a percentage");
    require(info.charging.has_value() == raw.status.has_value(), "charging comes from the status");
    if (info.charging) require(*info.charging == (*raw.status == "Charging"), "Charging means it");
    if (info.amperageMA) {
        require(std::isfinite(*info.amperageMA) && std::fabs(*info.amperageMA) <= 100'000.0,
                "a current is a finite, believable number of milliamperes");
        if (raw.status == "Discharging") require(*info.amperageMA <= 0, "discharge is negative");
        if (raw.status != "Discharging") require(*info.amperageMA >= 0, "charge is positive");
    }
    if (info.voltageMV) {
        require(std::isfinite(*info.voltageMV) && *info.voltageMV > 0, "a voltage is positive");
    }
    require(!info.onAC, "the mains state is the caller's to set");
    if (const auto power = velmora::batteryPower(info, "power_supply BAT0")) {
        require(std::isfinite(power->watts) && power->watts > 0 && power->watts < 400,
                "battery power is a believable number of watts");
    }
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    velmora::fuzz::ByteReader input(data, size);
    velmora::BatteryRaw raw;
    raw.capacity = attribute(input);
    raw.status = statusLine(input);
    raw.currentMicroamps = attribute(input);
    raw.powerMicrowatts = attribute(input);
    raw.voltageMicrovolts = attribute(input);
    raw.energyNow = attribute(input);
    raw.energyFull = attribute(input);
    raw.chargeNow = attribute(input);
    raw.chargeFull = attribute(input);
    checkBattery(raw, velmora::batteryFromRaw(raw));

    const auto temp = velmora::batteryTempFromTenths(attribute(input), "BAT0");
    if (temp) {
        require(velmora::plausibleCelsius(temp->celsius), "a battery temperature is plausible");
        require(temp->source == "power_supply BAT0", "the source names the battery");
    }
    return 0;
}
