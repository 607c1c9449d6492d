#pragma once

#include <deque>
#include <functional>
#include <optional>
#include <string>
#include <vector>

#include "actuators/shutdowner.hpp"
#include "actuators/sounder.hpp"
#include "policy/temp_sensor.hpp"

namespace velmora::testing {

/// Gives whatever reading the test sets; nothing until it sets one.
class ScriptedSensor final : public TempSensor {
  public:
    std::optional<double> readC() override { return reading; }
    std::optional<double> reading;
};

/// Remembers the cues in the order they were played: "alarm", "urgent", "tick".
class RecordingSounder final : public Sounder {
  public:
    void alarm() override { sounds.emplace_back("alarm"); }
    void urgent() override { sounds.emplace_back("urgent"); }
    void tick() override { sounds.emplace_back("tick"); }
    std::vector<std::string> sounds;
};

/// Stands in for the main loop: work posted here runs only when the test says so.
class ManualQueue {
  public:
    void post(std::function<void()> work) { pending_.push_back(std::move(work)); }
    /// Runs everything posted so far, and whatever that posts in turn.
    void runAll();
    [[nodiscard]] std::size_t size() const { return pending_.size(); }

  private:
    std::deque<std::function<void()>> pending_;
};

/// When a scripted answer arrives.
enum class Answer {
    now,    // before the call returns, as the dry run answers
    later,  // posted to the queue, as a background request answers
    never,  // dropped: the request hangs
};

/// A shutdowner whose answers the test scripts; it counts the calls.
class ScriptedShutdowner final : public Shutdowner {
  public:
    explicit ScriptedShutdowner(ManualQueue& queue) : queue_(queue) {}

    void shutdown(ShutdownCompletion completion) override;
    void probe(ProbeCompletion completion) override;

    Answer shutdownAnswer = Answer::later;
    std::optional<ShutdownError> shutdownResult;  // absent: the machine goes down
    Answer probeAnswer = Answer::now;
    AutomationOutcome probeResult = AutomationOutcome::granted();
    int shutdownCalls = 0;
    int probeCalls = 0;

  private:
    void answer(Answer when, std::function<void()> reply);

    ManualQueue& queue_;
};

}  // namespace velmora::testing
