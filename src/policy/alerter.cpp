#include "policy/alerter.hpp"

#include "policy/constants.hpp"

namespace velmora {

std::optional<Level> Alerter::update(std::optional<double> tempC, MonoTime now) {
    if (!tempC) {
        hotSince.reset();
        extremeSince.reset();
        return std::nullopt;
    }
    const Level cls = band(*tempC);
    if (cls <= Level::warm) {
        hotSince.reset();
        extremeSince.reset();
        return cls;
    }
    if (!hotSince) hotSince = now;
    if (cls == Level::blowout) return Level::blowout;  // leaves extremeSince running
    if (cls == Level::hot && now - *hotSince < watchdog::hotSustain) {
        extremeSince.reset();
        return Level::hot;
    }
    return extremeOrPromoted(now);
}

Level Alerter::extremeOrPromoted(MonoTime now) {
    if (!extremeSince) extremeSince = now;
    if (!promoteSustainedExtreme) return Level::extreme;
    return now - *extremeSince >= watchdog::extremeSustain ? Level::blowout : Level::extreme;
}

}  // namespace velmora
