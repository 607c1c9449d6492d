#include "policy/countdown.hpp"

#include <algorithm>
#include <chrono>
#include <cmath>
#include <limits>
#include <stdexcept>

#include "policy/constants.hpp"

namespace velmora {

namespace {

std::int64_t wholeSecondsOrThrow(Seconds length) {
    constexpr auto limit = static_cast<double>(std::numeric_limits<std::int32_t>::max());
    const double seconds = length.count();
    if (!std::isfinite(seconds) || std::fabs(seconds) > limit) {
        throw std::invalid_argument("countdown length must be a finite number of seconds");
    }
    return static_cast<std::int64_t>(seconds);  // truncates toward zero
}

}  // namespace

std::string_view rawValue(CountdownState state) {
    switch (state) {
        case CountdownState::idle:
            return "idle";
        case CountdownState::countdown:
            return "countdown";
        case CountdownState::fired:
            return "fired";
        case CountdownState::grace:
            return "grace";
        case CountdownState::done:
            return "done";
    }
    return "idle";
}

std::string_view rawValue(CountdownEventKind kind) {
    switch (kind) {
        case CountdownEventKind::countdownStart:
            return "countdown-start";
        case CountdownEventKind::cue:
            return "cue";
        case CountdownEventKind::fire:
            return "fire";
        case CountdownEventKind::simComplete:
            return "sim-complete";
        case CountdownEventKind::cancel:
            return "cancel";
        case CountdownEventKind::abort:
            return "abort";
        case CountdownEventKind::graceEnd:
            return "grace-end";
        case CountdownEventKind::cooled:
            return "cooled";
        case CountdownEventKind::stale:
            return "stale-restart";
    }
    return "cue";
}

CountdownConfig CountdownConfig::production() {
    return CountdownConfig{watchdog::countdownLength, watchdog::graceLength, watchdog::staleGap,
                           false};
}

std::vector<CountdownEvent> Countdown::startCountdown(MonoTime now) {
    const std::int64_t whole = wholeSecondsOrThrow(cfg.countdown);
    state = CountdownState::countdown;
    deadline = now + cfg.countdown;
    lastCue = whole;
    return {CountdownEvent{CountdownEventKind::countdownStart, remaining(now)}};
}

void Countdown::appendStart(MonoTime now, std::vector<CountdownEvent>& events) {
    const auto started = startCountdown(now);
    events.insert(events.end(), started.begin(), started.end());
}

std::vector<CountdownEvent> Countdown::step(MonoTime now, CountdownInput input) {
    const Seconds gap = last ? now - *last : Seconds::zero();
    last = now;
    const bool stale = cfg.stale < gap && cfg.stale > Seconds::zero();
    std::vector<CountdownEvent> events;
    if (cancelled && input.calm && state != CountdownState::countdown &&
        state != CountdownState::fired) {
        cancelled = false;
        events.push_back({CountdownEventKind::cooled, 0});
    }
    switch (state) {
        case CountdownState::fired:
        case CountdownState::done:
            break;
        case CountdownState::grace:
            stepGrace(now, input, events);
            break;
        case CountdownState::idle:
            if (input.enabled && input.critical) appendStart(now, events);
            break;
        case CountdownState::countdown:
            stepCountdown(now, input, stale, events);
            break;
    }
    return events;
}

void Countdown::stepGrace(MonoTime now, CountdownInput input, std::vector<CountdownEvent>& events) {
    if (now < graceUntil) return;
    state = CountdownState::idle;
    events.push_back({CountdownEventKind::graceEnd, 0});
    if (input.enabled && input.critical) appendStart(now, events);
}

void Countdown::stepCountdown(MonoTime now, CountdownInput input, bool stale,
                              std::vector<CountdownEvent>& events) {
    if (!(input.enabled && input.critical)) {
        state = CountdownState::idle;
        events.push_back({CountdownEventKind::abort, 0});
        return;
    }
    if (stale) {
        events.push_back({CountdownEventKind::stale, 0});
        appendStart(now, events);
        return;
    }
    if (!(now < deadline)) {
        state = sim ? CountdownState::done : CountdownState::fired;
        events.push_back({sim ? CountdownEventKind::simComplete : CountdownEventKind::fire, 0});
        return;
    }
    const std::int64_t r = remaining(now);
    if (r >= lastCue) return;
    const bool due = std::any_of(watchdog::cueSeconds.begin(), watchdog::cueSeconds.end(),
                                 [&](int c) { return r <= c && c < lastCue; });
    lastCue = r;
    if (due) events.push_back({CountdownEventKind::cue, r});
}

std::vector<CountdownEvent> Countdown::cancel(MonoTime now) {
    const bool cancellable =
        state == CountdownState::countdown || (state == CountdownState::fired && cfg.firedCancel);
    if (!cancellable) return {};
    state = CountdownState::grace;
    graceUntil = now + cfg.grace;
    cancelled = true;
    return {CountdownEvent{CountdownEventKind::cancel, 0}};
}

void Countdown::shutdownFailed(MonoTime now) {
    if (state != CountdownState::fired) return;
    state = CountdownState::grace;
    graceUntil = now + cfg.grace;
}

void Countdown::reset() {
    state = CountdownState::idle;
    last.reset();
    cancelled = false;
}

std::int64_t Countdown::remaining(MonoTime now) const {
    // Whole seconds from the rounded milliseconds: `(start + 10) - start` can come out a hair
    // above 10 in floating point, and must not read as 11.
    const std::int64_t ms = remainingMs(now);
    return (ms + 999) / 1000;
}

std::int64_t Countdown::remainingMs(MonoTime now) const {
    if (state != CountdownState::countdown) return 0;
    const auto ms = std::llround(std::chrono::duration<double, std::milli>(deadline - now).count());
    return std::max<std::int64_t>(ms, 0);
}

Seconds Countdown::graceLeft(MonoTime now) const {
    if (state != CountdownState::grace) return Seconds::zero();
    return now < graceUntil ? graceUntil - now : Seconds::zero();
}

}  // namespace velmora
