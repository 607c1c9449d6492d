#include "policy/countdown.hpp"

#include <algorithm>
#include <cmath>
#include <limits>
#include <stdexcept>

#include "policy/constants.hpp"

namespace velmora {

namespace {

std::int64_t wholeSecondsOrThrow(double seconds) {
    constexpr auto limit = static_cast<double>(std::numeric_limits<std::int32_t>::max());
    if (!std::isfinite(seconds) || std::fabs(seconds) > limit) {
        throw std::invalid_argument("countdown length must be a finite number of seconds");
    }
    return static_cast<std::int64_t>(seconds);  // truncates toward zero
}

}  // namespace

std::string_view rawValue(CState state) {
    switch (state) {
        case CState::idle:
            return "idle";
        case CState::countdown:
            return "countdown";
        case CState::fired:
            return "fired";
        case CState::grace:
            return "grace";
        case CState::done:
            return "done";
    }
    return "idle";
}

std::string_view rawValue(CEventKind kind) {
    switch (kind) {
        case CEventKind::countdownStart:
            return "countdown-start";
        case CEventKind::cue:
            return "cue";
        case CEventKind::fire:
            return "fire";
        case CEventKind::simComplete:
            return "sim-complete";
        case CEventKind::cancel:
            return "cancel";
        case CEventKind::abort:
            return "abort";
        case CEventKind::graceEnd:
            return "grace-end";
        case CEventKind::cooled:
            return "cooled";
        case CEventKind::stale:
            return "stale-restart";
    }
    return "cue";
}

CConfig CConfig::production() {
    return CConfig{watchdog::countdownSeconds, watchdog::graceSeconds, watchdog::staleGapSeconds, false};
}

std::vector<CEvent> Machine::startCountdown(MonoTime now) {
    const std::int64_t whole = wholeSecondsOrThrow(cfg.countdown);
    state = CState::countdown;
    deadline = now + cfg.countdown;
    lastCue = whole;
    return {CEvent{CEventKind::countdownStart, remaining(now)}};
}

void Machine::appendStart(MonoTime now, std::vector<CEvent>& events) {
    const auto started = startCountdown(now);
    events.insert(events.end(), started.begin(), started.end());
}

std::vector<CEvent> Machine::step(MonoTime now, CInput input) {
    const double gap = last ? now - *last : 0.0;
    last = now;
    const bool stale = cfg.stale < gap && cfg.stale > 0;
    std::vector<CEvent> events;
    if (cancelled && input.calm && state != CState::countdown && state != CState::fired) {
        cancelled = false;
        events.push_back({CEventKind::cooled, 0});
    }
    switch (state) {
        case CState::fired:
        case CState::done:
            break;
        case CState::grace:
            stepGrace(now, input, events);
            break;
        case CState::idle:
            if (input.enabled && input.critical) appendStart(now, events);
            break;
        case CState::countdown:
            stepCountdown(now, input, stale, events);
            break;
    }
    return events;
}

void Machine::stepGrace(MonoTime now, CInput input, std::vector<CEvent>& events) {
    if (now < graceUntil) return;
    state = CState::idle;
    events.push_back({CEventKind::graceEnd, 0});
    if (input.enabled && input.critical) appendStart(now, events);
}

void Machine::stepCountdown(MonoTime now, CInput input, bool stale, std::vector<CEvent>& events) {
    if (!(input.enabled && input.critical)) {
        state = CState::idle;
        events.push_back({CEventKind::abort, 0});
        return;
    }
    if (stale) {
        events.push_back({CEventKind::stale, 0});
        appendStart(now, events);
        return;
    }
    if (!(now < deadline)) {
        state = sim ? CState::done : CState::fired;
        events.push_back({sim ? CEventKind::simComplete : CEventKind::fire, 0});
        return;
    }
    const std::int64_t r = remaining(now);
    if (r >= lastCue) return;
    const bool due = std::any_of(watchdog::cueSeconds.begin(), watchdog::cueSeconds.end(),
                                 [&](int c) { return r <= c && c < lastCue; });
    lastCue = r;
    if (due) events.push_back({CEventKind::cue, r});
}

std::vector<CEvent> Machine::cancel(MonoTime now) {
    const bool cancellable =
        state == CState::countdown || (state == CState::fired && cfg.firedCancel);
    if (!cancellable) return {};
    state = CState::grace;
    graceUntil = now + cfg.grace;
    cancelled = true;
    return {CEvent{CEventKind::cancel, 0}};
}

void Machine::shutdownFailed(MonoTime now) {
    if (state != CState::fired) return;
    state = CState::grace;
    graceUntil = now + cfg.grace;
}

void Machine::reset() {
    state = CState::idle;
    last.reset();
    cancelled = false;
}

std::int64_t Machine::remaining(MonoTime now) const {
    if (state != CState::countdown) return 0;
    const double s = deadline - now;
    if (s <= 0) return 0;
    return static_cast<std::int64_t>(std::ceil(s));
}

std::int64_t Machine::remainingMs(MonoTime now) const {
    if (state != CState::countdown) return 0;
    const auto ms = std::llround((deadline - now) * 1000.0);
    return std::max<std::int64_t>(ms, 0);
}

double Machine::graceLeft(MonoTime now) const {
    if (state != CState::grace) return 0;
    return now < graceUntil ? graceUntil - now : 0;
}

}  // namespace velmora
