#pragma once

#include <deque>
#include <memory>

#include "metrics/metrics_backend.hpp"

namespace velmora::testing {

/// A backend that hands out prepared snapshots (the last one repeats) and counts its calls.
struct ScriptedState {
    std::deque<LiveInputs> samples;
    LiveInputs repeat;
    int primes = 0;
    int samplesTaken = 0;
    std::string summary = "scripted sensors";
    MetricSources sources{"thermal src", "cpu src", "core src", "load src", "mem src", "pres src",
                          "ct src",      "gt src",  "bt src",   "gl src",   "fan src", "power src"};
};

class ScriptedBackend final : public MetricsBackend {
  public:
    explicit ScriptedBackend(std::shared_ptr<ScriptedState> state) : state_(std::move(state)) {}

    void prime(Timestamp) override { ++state_->primes; }
    LiveInputs sample(Timestamp) override {
        ++state_->samplesTaken;
        if (state_->samples.empty()) return state_->repeat;
        LiveInputs next = state_->samples.front();
        state_->samples.pop_front();
        state_->repeat = next;
        return next;
    }
    std::string sensorSummary() override { return state_->summary; }
    MetricSources sources() const override { return state_->sources; }

  private:
    std::shared_ptr<ScriptedState> state_;
};

}  // namespace velmora::testing
