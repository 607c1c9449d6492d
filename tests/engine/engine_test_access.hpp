#pragma once

#include "engine/engine.hpp"
#include "policy/countdown.hpp"
#include "policy/level.hpp"

namespace velmora::testing {

/// The few things the engine's tests need beyond its commands and its snapshot: states that no
/// command produces, and waiting for the marker work that runs on a thread of its own.
class EngineTestAccess {
  public:
    /// A rehearsal beside the real countdown. A tick never leaves both; this is how a cancel
    /// that arrives before the tick that ends the rehearsal finds the engine.
    static void addRehearsal(Engine& engine) {
        engine.sim_.emplace(CountdownConfig::production(), true);
    }

    /// A reading that no tick has acted on yet, for the view alone.
    static void setReading(Engine& engine, double tempC, Level level) {
        engine.tempC_ = tempC;
        engine.level_ = level;
    }

    /// Waits until every marker write and removal queued so far is done.
    static void settleMarkers(Engine& engine) { engine.markerJobs_.settle(); }
};

}  // namespace velmora::testing
