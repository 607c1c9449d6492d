#pragma once

#include <cstdint>
#include <optional>
#include <string_view>
#include <vector>

#include "policy/mono_time.hpp"

namespace velmora {

enum class CState { idle, countdown, fired, grace, done };
std::string_view rawValue(CState state);

enum class CEventKind {
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
std::string_view rawValue(CEventKind kind);

struct CEvent {
    CEventKind kind = CEventKind::cue;
    std::int64_t remaining = 0;  // only countdownStart and cue carry seconds
    bool operator==(const CEvent&) const = default;
};

struct CConfig {
    double countdown = 0;
    double grace = 0;
    double stale = 0;  // 0 or less switches the stale rule off
    bool firedCancel = false;

    static CConfig production();
    bool operator==(const CConfig&) const = default;
};

struct CInput {
    bool critical = false;
    bool calm = false;
    bool enabled = false;
};

/// The emergency countdown. It only decides: the engine performs the effects of its events,
/// in the order they are returned.
class Machine {
  public:
    Machine(CConfig cfg, bool sim) : cfg(cfg), sim(sim) {}

    std::vector<CEvent> step(MonoTime now, CInput input);
    /// Throws std::invalid_argument when the configured length is not a finite whole-number
    /// range: a countdown of unknown length must never start quietly.
    std::vector<CEvent> startCountdown(MonoTime now);
    std::vector<CEvent> cancel(MonoTime now);
    void shutdownFailed(MonoTime now);
    void reset();

    std::int64_t remaining(MonoTime now) const;
    std::int64_t remainingMs(MonoTime now) const;
    double graceLeft(MonoTime now) const;

    CState state = CState::idle;
    const CConfig cfg;
    const bool sim;
    std::optional<MonoTime> last;
    MonoTime deadline = MonoTime::distantPast();
    MonoTime graceUntil = MonoTime::distantPast();
    std::int64_t lastCue = 0;
    bool cancelled = false;

  private:
    void stepCountdown(MonoTime now, CInput input, bool stale, std::vector<CEvent>& events);
    void stepGrace(MonoTime now, CInput input, std::vector<CEvent>& events);
    void appendStart(MonoTime now, std::vector<CEvent>& events);
};

}  // namespace velmora
