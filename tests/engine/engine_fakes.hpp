#pragma once

#include <functional>
#include <optional>
#include <string>
#include <vector>

#include "actuators/shutdowner.hpp"
#include "policy/temp_sensor.hpp"
#include "support/manual_queue.hpp"
#include "support/recording_sounder.hpp"

namespace velmora::testing {

/// Gives whatever reading the test sets; nothing until it sets one.
class ScriptedSensor final : public TempSensor {
  public:
    std::optional<double> readC() override { return reading; }
    std::optional<double> reading;
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
