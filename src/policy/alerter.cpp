#include "policy/alerter.hpp"

#include "policy/constants.hpp"

namespace velmora {

std::optional<Level> Alerter::update(std::optional<double> tempC, MonoTime now) {
    if (!tempC) {
        hotSince_.reset();
        extremeSince_.reset();
        return std::nullopt;
    }
    const Level cls = band(*tempC);
    if (cls <= Level::warm) {
        hotSince_.reset();
        extremeSince_.reset();
        return cls;
    }
    if (!hotSince_) hotSince_ = now;
    if (cls == Level::blowout) return Level::blowout;  // leaves extremeSince_ running
    if (cls == Level::hot && now - *hotSince_ < watchdog::hotSustain) {
        extremeSince_.reset();
        return Level::hot;
    }
    return extremeOrPromoted(now);
}

Level Alerter::extremeOrPromoted(MonoTime now) {
    if (!extremeSince_) extremeSince_ = now;
    if (!promote_) return Level::extreme;
    return now - *extremeSince_ >= watchdog::extremeSustain ? Level::blowout : Level::extreme;
}

}  // namespace velmora
