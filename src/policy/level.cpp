#include "policy/level.hpp"

#include "policy/constants.hpp"

namespace velmora {

std::optional<Level> levelFromRaw(int raw) {
    if (raw < rawValue(Level::ok) || raw > rawValue(Level::blowout)) return std::nullopt;
    return static_cast<Level>(raw);
}

std::string_view label(Level level) {
    switch (level) {
        case Level::ok:
            return "NORMAL";
        case Level::warm:
            return "WARM";
        case Level::hot:
            return "HOT";
        case Level::extreme:
            return "EXTREME HEAT";
        case Level::blowout:
            return "EMERGENCY";
    }
    return "NORMAL";
}

std::string_view stateName(Level level) {
    switch (level) {
        case Level::ok:
            return "Nominal";
        case Level::warm:
            return "Fair";
        case Level::hot:
        case Level::extreme:
            return "Serious";
        case Level::blowout:
            return "Critical";
    }
    return "Nominal";
}

Level band(double celsius) {
    // Every comparison is false for NaN, which therefore lands on `ok`.
    if (celsius >= watchdog::criticalC) return Level::blowout;
    if (celsius >= watchdog::extremeC) return Level::extreme;
    if (celsius >= watchdog::hotC) return Level::hot;
    if (celsius >= watchdog::warmC) return Level::warm;
    return Level::ok;
}

}  // namespace velmora
