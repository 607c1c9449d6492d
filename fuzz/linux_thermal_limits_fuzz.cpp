// The kernel's own danger marks and the temperatures held against them: a thermal zone's trip
// points (type, temperature, hysteresis), an hwmon input's limits (max, crit, emergency and their
// hysteresis) and then a run of samples (zone temperature, hwmon temperature, throttle flag), all
// as attribute texts, NUL-separated. The rules stay sane and the derived state never jumps to
// critical on a single sample.

#include <array>
#include <cmath>
#include <cstddef>
#include <cstdint>
#include <string>
#include <vector>

#include "fuzz_support.hpp"
#include "metrics/linux/hwmon.hpp"
#include "metrics/linux/thermal_deriver.hpp"

namespace {

using velmora::ThermalState;
using velmora::fuzz::ByteReader;
using velmora::fuzz::require;

std::optional<double> celsiusIn(ByteReader& input) {
    const auto milli = velmora::parseInteger(input.takeUntil('\0'));
    return milli ? std::optional(velmora::fromMillidegrees(*milli)) : std::nullopt;
}

std::vector<velmora::TripPoint> readTrips(ByteReader& input) {
    std::vector<velmora::TripPoint> trips;
    for (unsigned n = input.take<std::uint8_t>() % 5U; n > 0; --n) {
        std::string type(velmora::trimmed(input.takeUntil('\0')));
        const auto celsius = celsiusIn(input);
        const auto hysteresis = celsiusIn(input);
        if (celsius) trips.push_back({std::move(type), *celsius, hysteresis});
    }
    return trips;
}

velmora::HwmonLimits readLimits(ByteReader& input) {
    velmora::HwmonLimits limits;
    for (auto* limit : {&limits.max, &limits.maxHyst, &limits.crit, &limits.critHyst,
                        &limits.emergency, &limits.emergencyHyst}) {
        *limit = celsiusIn(input);
    }
    return limits;
}

void checkRules(const std::vector<velmora::ThermalCondition>& rules) {
    for (const auto& rule : rules) {
        require(rule.level == ThermalState::fair || rule.level == ThermalState::serious ||
                    rule.level == ThermalState::critical,
                "a rule raises the state");
        require(std::isfinite(rule.threshold), "a threshold is a finite temperature");
        require(std::isfinite(rule.margin) && rule.margin >= velmora::kMinimumFall,
                "a rule falls back only past at least the minimum margin");
    }
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    ByteReader input(data, size);
    auto zoneRules = velmora::zoneConditions(readTrips(input));
    auto hwmonRules = velmora::hwmonConditions(readLimits(input));
    checkRules(zoneRules);
    checkRules(hwmonRules);

    velmora::ThermalDeriver deriver;
    deriver.setSources({{"zone", std::move(zoneRules)}, {"hwmon", std::move(hwmonRules)}});
    ThermalState previous = ThermalState::nominal;
    for (int sample = 0; sample < 16 && !input.empty(); ++sample) {
        const std::array<std::optional<double>, 2> readings{celsiusIn(input), celsiusIn(input)};
        const bool throttled = input.takeUntil('\0') == "1";
        const ThermalState state = deriver.update(readings, throttled);
        require(static_cast<int>(state) >= 0 && static_cast<int>(state) <= 3, "a known state");
        require(state != ThermalState::critical || previous == ThermalState::serious ||
                    previous == ThermalState::critical,
                "critical needs a second sample in a row");
        require(deriver.usableSources() <= 2, "only real sources count");
        if (deriver.usableSources() == 0 && !throttled) {
            require(state == ThermalState::nominal, "with nothing to read the state is nominal");
        }
        previous = state;
    }
    return 0;
}
