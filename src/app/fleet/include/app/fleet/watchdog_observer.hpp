#pragma once

#include <nlohmann/json_fwd.hpp>

#include "metrics/live_inputs.hpp"
#include "policy/timestamp.hpp"

namespace velmora {

/// Something outside the process that follows the watchdog (a metrics file, the service
/// manager). Every call comes from the main loop's thread and must return quickly.
class WatchdogObserver {
  public:
    WatchdogObserver() = default;
    virtual ~WatchdogObserver() = default;
    WatchdogObserver(const WatchdogObserver&) = delete;
    WatchdogObserver& operator=(const WatchdogObserver&) = delete;
    WatchdogObserver(WatchdogObserver&&) = delete;
    WatchdogObserver& operator=(WatchdogObserver&&) = delete;

    /// After every tick of the engine, with the view it returned.
    virtual void ticked(const nlohmann::json& /*view*/) {}
    /// After every live sample.
    virtual void sampled(const LiveInputs& /*inputs*/, Timestamp /*now*/) {}
    /// Each time the shutdown mechanism is asked to power the machine off.
    virtual void shutdownRequested() {}
    /// Whether it must see every live sample (a file written after each one).
    virtual bool followsEverySample() const { return true; }
};

}  // namespace velmora
