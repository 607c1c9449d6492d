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
    const std::int64_t whole = wholeSecondsOrThrow(cfg_.countdown);
    state_ = CountdownState::countdown;
    deadline_ = now + cfg_.countdown;
    lastCue_ = whole;
    return {CountdownEvent{CountdownEventKind::countdownStart, remaining(now)}};
}

void Countdown::appendStart(MonoTime now, std::vector<CountdownEvent>& events) {
    const auto started = startCountdown(now);
    events.insert(events.end(), started.begin(), started.end());
}

std::vector<CountdownEvent> Countdown::step(MonoTime now, CountdownInput input) {
    const Seconds gap = last_ ? now - *last_ : Seconds::zero();
    last_ = now;
    const bool stale = cfg_.stale < gap && cfg_.stale > Seconds::zero();
    std::vector<CountdownEvent> events;
    if (cancelled_ && input.calm && state_ != CountdownState::countdown &&
        state_ != CountdownState::fired) {
        cancelled_ = false;
        events.push_back({CountdownEventKind::cooled, 0});
    }
    switch (state_) {
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
    if (now < graceUntil_) return;
    state_ = CountdownState::idle;
    events.push_back({CountdownEventKind::graceEnd, 0});
    if (input.enabled && input.critical) appendStart(now, events);
}

void Countdown::stepCountdown(MonoTime now, CountdownInput input, bool stale,
                              std::vector<CountdownEvent>& events) {
    if (!(input.enabled && input.critical)) {
        state_ = CountdownState::idle;
        events.push_back({CountdownEventKind::abort, 0});
        return;
    }
    if (stale) {
        events.push_back({CountdownEventKind::stale, 0});
        appendStart(now, events);
        return;
    }
    if (!(now < deadline_)) {
        state_ = sim_ ? CountdownState::done : CountdownState::fired;
        events.push_back({sim_ ? CountdownEventKind::simComplete : CountdownEventKind::fire, 0});
        return;
    }
    const std::int64_t r = remaining(now);
    if (r >= lastCue_) return;
    const bool due = std::any_of(watchdog::cueSeconds.begin(), watchdog::cueSeconds.end(),
                                 [&](int c) { return r <= c && c < lastCue_; });
    lastCue_ = r;
    if (due) events.push_back({CountdownEventKind::cue, r});
}

std::vector<CountdownEvent> Countdown::cancel(MonoTime now) {
    const bool cancellable = state_ == CountdownState::countdown ||
                             (state_ == CountdownState::fired && cfg_.firedCancel);
    if (!cancellable) return {};
    state_ = CountdownState::grace;
    graceUntil_ = now + cfg_.grace;
    cancelled_ = true;
    return {CountdownEvent{CountdownEventKind::cancel, 0}};
}

void Countdown::shutdownFailed(MonoTime now) {
    if (state_ != CountdownState::fired) return;
    state_ = CountdownState::grace;
    graceUntil_ = now + cfg_.grace;
}

void Countdown::reset() {
    state_ = CountdownState::idle;
    last_.reset();
    cancelled_ = false;
}

std::int64_t Countdown::remaining(MonoTime now) const {
    // Whole seconds from the rounded milliseconds: `(start + 10) - start` can come out a hair
    // above 10 in floating point, and must not read as 11.
    const std::int64_t ms = remainingMs(now);
    return (ms + 999) / 1000;
}

std::int64_t Countdown::remainingMs(MonoTime now) const {
    if (state_ != CountdownState::countdown) return 0;
    const auto ms =
        std::llround(std::chrono::duration<double, std::milli>(deadline_ - now).count());
    return std::max<std::int64_t>(ms, 0);
}

Seconds Countdown::graceLeft(MonoTime now) const {
    if (state_ != CountdownState::grace) return Seconds::zero();
    return now < graceUntil_ ? graceUntil_ - now : Seconds::zero();
}

}  // namespace velmora
