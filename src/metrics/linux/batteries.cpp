#include "metrics/linux/batteries.hpp"

#include <algorithm>
#include <array>
#include <cmath>

#include "metrics/linux/utf8_text.hpp"

namespace velmora {

namespace {

constexpr std::array<std::string_view, 5> kStatuses{"Unknown", "Charging", "Discharging",
                                                    "Not charging", "Full"};

constexpr double kMicroPerUnit = 1'000'000.0;

std::optional<double> energyWh(std::optional<long long> energyMicroWh,
                               std::optional<long long> chargeMicroAh,
                               std::optional<double> volts) {
    if (energyMicroWh && *energyMicroWh >= 0) {
        return static_cast<double>(*energyMicroWh) / kMicroPerUnit;
    }
    if (chargeMicroAh && *chargeMicroAh >= 0 && volts) {
        return static_cast<double>(*chargeMicroAh) / kMicroPerUnit * *volts;
    }
    return std::nullopt;
}

std::optional<double> voltsOf(std::optional<long long> designMicrovolts,
                              std::optional<long long> nowMicrovolts) {
    for (const auto& microvolts : {designMicrovolts, nowMicrovolts}) {
        if (microvolts && *microvolts > 0) return static_cast<double>(*microvolts) / kMicroPerUnit;
    }
    return std::nullopt;
}

bool statusIs(const BatteryPack& pack, std::string_view word) {
    return pack.status && *pack.status == word;
}

std::optional<int> combinedPercent(const std::vector<BatteryPack>& packs) {
    double now = 0.0;
    double full = 0.0;
    double percentSum = 0.0;
    int counted = 0;
    bool allWeighed = true;
    for (const BatteryPack& pack : packs) {
        if (!pack.info.percent) continue;
        percentSum += *pack.info.percent;
        ++counted;
        if (pack.energyNowWh && pack.energyFullWh && *pack.energyFullWh > 0) {
            now += *pack.energyNowWh;
            full += *pack.energyFullWh;
        } else {
            allWeighed = false;
        }
    }
    if (counted == 0) return std::nullopt;
    if (counted == 1) return static_cast<int>(std::lround(percentSum));
    const double share = allWeighed ? now / full * 100.0 : percentSum / counted;
    return static_cast<int>(std::lround(std::clamp(share, 0.0, 100.0)));
}

// The pack carrying the most current sets the voltage of the combined figure.
std::optional<double> combinedVoltage(const std::vector<BatteryPack>& packs) {
    const BatteryPack* best = nullptr;
    for (const BatteryPack& pack : packs) {
        if (!pack.info.voltageMV) continue;
        const double current = std::fabs(pack.info.amperageMA.value_or(0.0));
        if (!best || current > std::fabs(best->info.amperageMA.value_or(0.0))) best = &pack;
    }
    return best ? best->info.voltageMV : std::nullopt;
}

}  // namespace

std::string batteryStatusWord(std::string_view status) {
    const auto known = std::find(kStatuses.begin(), kStatuses.end(), status);
    return std::string(known == kStatuses.end() ? kStatuses.front() : *known);
}

BatteryPack batteryPackFromRaw(const std::string& name, const BatteryRaw& raw,
                               std::optional<long long> voltageMinDesignMicrovolts) {
    BatteryPack pack;
    // The name is a directory's, and reaches the dashboard's JSON, which must be valid UTF-8.
    pack.name = validUtf8(name);
    pack.source = "power_supply " + pack.name;
    if (raw.status) pack.status = batteryStatusWord(*raw.status);
    BatteryRaw known = raw;
    known.status = pack.status;
    pack.info = batteryFromRaw(known);
    const auto volts = voltsOf(voltageMinDesignMicrovolts, raw.voltageMicrovolts);
    pack.energyNowWh = energyWh(raw.energyNow, raw.chargeNow, volts);
    pack.energyFullWh = energyWh(raw.energyFull, raw.chargeFull, volts);
    return pack;
}

std::optional<bool> runningOnBattery(const std::vector<BatteryPack>& packs,
                                     std::optional<bool> acOnline) {
    const bool discharging = std::any_of(packs.begin(), packs.end(), [](const BatteryPack& p) {
        return statusIs(p, "Discharging");
    });
    if (discharging || acOnline == false) return true;
    if (acOnline) return false;
    // No AC supply to ask: a battery that says it is not discharging is not running the machine.
    const bool anyStatus = std::any_of(packs.begin(), packs.end(),
                                       [](const BatteryPack& p) { return p.status.has_value(); });
    return anyStatus ? std::optional(false) : std::nullopt;
}

BatteryInfo combineBatteries(const std::vector<BatteryPack>& packs, std::optional<bool> acOnline) {
    BatteryInfo info;
    if (packs.size() == 1) info = packs.front().info;
    info.percent = combinedPercent(packs);
    const auto onBattery = runningOnBattery(packs, acOnline);
    info.onAC = onBattery ? std::optional(!*onBattery) : std::nullopt;
    const bool anyStatus = std::any_of(packs.begin(), packs.end(),
                                       [](const BatteryPack& p) { return p.status.has_value(); });
    if (anyStatus) {
        const bool charging = std::any_of(packs.begin(), packs.end(), [](const BatteryPack& p) {
            return statusIs(p, "Charging");
        });
        info.charging = charging && onBattery != true;
    }
    if (packs.size() > 1) {
        std::optional<double> current;
        for (const BatteryPack& pack : packs) {
            if (pack.info.amperageMA) current = current.value_or(0.0) + *pack.info.amperageMA;
        }
        info.amperageMA = current;
        info.voltageMV = combinedVoltage(packs);
    }
    return info;
}

std::optional<PowerReading> combinedBatteryPower(const std::vector<PowerReading>& packPowers) {
    if (packPowers.empty()) return std::nullopt;
    PowerReading total = packPowers.front();
    for (std::size_t i = 1; i < packPowers.size(); ++i) {
        const PowerReading& next = packPowers[i];
        total.watts += next.watts;
        if (next.label != total.label) total.label = "Battery power";
        // "power_supply BAT1" adds its name only.
        const auto blank = next.source.find(' ');
        total.source += " + " + next.source.substr(blank == std::string::npos ? 0 : blank + 1);
    }
    return total;
}

}  // namespace velmora
