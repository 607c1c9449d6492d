#pragma once

#include <cstdint>
#include <optional>
#include <string_view>
#include <vector>

#include "policy/mono_time.hpp"

namespace velmora {

enum class CountdownState { idle, countdown, fired, grace, done };
std::string_view rawValue(CountdownState state);

enum class CountdownEventKind {
    countdownStart,
    cue,
    fire,
    simComplete,
    cancel,
    abort,
    graceEnd,
    cooled,
    stale
};
std::string_view rawValue(CountdownEventKind kind);

struct CountdownEvent {
    CountdownEventKind kind = CountdownEventKind::cue;
    std::int64_t remaining = 0;  // only countdownStart and cue carry seconds
    bool operator==(const CountdownEvent&) const = default;
};

struct CountdownConfig {
    Seconds countdown{};
    Seconds grace{};
    Seconds stale{};  // zero or less switches the stale rule off
    bool firedCancel = false;

    static CountdownConfig production();
    bool operator==(const CountdownConfig&) const = default;
};

struct CountdownInput {
    bool critical = false;
    bool calm = false;
    bool enabled = false;
};

/// The emergency countdown. It only decides: the engine performs the effects of its events,
/// in the order they are returned.
class Countdown {
  public:
    Countdown(CountdownConfig cfg, bool sim) : cfg_(cfg), sim_(sim) {}

    std::vector<CountdownEvent> step(MonoTime now, CountdownInput input);
    /// Throws std::invalid_argument when the configured length is not a finite whole-number
    /// range: a countdown of unknown length must never start quietly.
    std::vector<CountdownEvent> startCountdown(MonoTime now);
    std::vector<CountdownEvent> cancel(MonoTime now);
    void shutdownFailed(MonoTime now);
    void reset();

    std::int64_t remaining(MonoTime now) const;
    std::int64_t remainingMs(MonoTime now) const;
    Seconds graceLeft(MonoTime now) const;

    CountdownState state() const { return state_; }
    const CountdownConfig& config() const { return cfg_; }
    /// A rehearsal: it ends in `done` instead of firing.
    bool simulated() const { return sim_; }
    /// When it last stepped; nothing before the first step and after a reset.
    std::optional<MonoTime> lastStep() const { return last_; }
    MonoTime deadline() const { return deadline_; }
    MonoTime graceUntil() const { return graceUntil_; }
    /// The last whole second a cue was given for.
    std::int64_t lastCue() const { return lastCue_; }
    /// Cancelled by the user, until calm returns.
    bool cancelled() const { return cancelled_; }

  private:
    void stepCountdown(MonoTime now, CountdownInput input, bool stale,
                       std::vector<CountdownEvent>& events);
    void stepGrace(MonoTime now, CountdownInput input, std::vector<CountdownEvent>& events);
    void appendStart(MonoTime now, std::vector<CountdownEvent>& events);

    CountdownState state_ = CountdownState::idle;
    CountdownConfig cfg_;
    bool sim_;
    std::optional<MonoTime> last_;
    MonoTime deadline_ = MonoTime::distantPast();
    MonoTime graceUntil_ = MonoTime::distantPast();
    std::int64_t lastCue_ = 0;
    bool cancelled_ = false;
};

}  // namespace velmora
