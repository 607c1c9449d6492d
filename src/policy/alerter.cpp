#include "policy/alerter.hpp"

#include "policy/constants.hpp"

namespace velmora {

std::optional<Level> Alerter::update(std::optional<double> tempC, MonoTime now) {
    if (!tempC) {
        hotSince.reset();
        extSince.reset();
        return std::nullopt;
    }
    const Level cls = band(*tempC);
    if (cls <= Level::warm) {
        hotSince.reset();
        extSince.reset();
        return cls;
    }
    if (!hotSince) hotSince = now;
    if (cls == Level::blowout) return Level::blowout;  // leaves extSince running
    if (cls == Level::hot && now - *hotSince < watchdog::hotSustainSeconds) {
        extSince.reset();
        return Level::hot;
    }
    return stageA(now);
}

Level Alerter::stageA(MonoTime now) {
    if (!extSince) extSince = now;
    if (!timedStageB) return Level::extreme;
    return now - *extSince >= watchdog::extremeSustainSeconds ? Level::blowout : Level::extreme;
}

}  // namespace velmora
