#pragma once

#include <chrono>

#include "actuators/script_runner.hpp"
#include "actuators/shutdowner.hpp"
#include "policy/sinks.hpp"

namespace velmora {

/// Shuts a Mac down by asking System Events through the scripting tool. Each request runs the
/// tool on a background thread; the completion is handed to `post`, the owner's main loop.
class OsascriptShutdowner final : public Shutdowner {
  public:
    /// How long to wait for the tool: the shutdown answers fast unless the permission prompt is
    /// up; the probe leaves the user time to answer that prompt.
    static constexpr std::chrono::seconds shutdownTimeout{20};
    static constexpr std::chrono::seconds probeTimeout{120};

    OsascriptShutdowner(LogSink log, Post post, ScriptRunner runner = ScriptRunner{});

    void shutdown(ShutdownCompletion completion) override;
    void probe(ProbeCompletion completion) override;

  private:
    LogSink log_;
    Post post_;
    ScriptRunner runner_;
};

}  // namespace velmora
