#pragma once

#include <functional>
#include <string_view>

#include "actuators/shutdowner.hpp"
#include "policy/sinks.hpp"

namespace velmora {

/// Receives a background request's outcome on the background thread.
using OutcomeReceiver = std::function<void(AutomationOutcome)>;

/// For a shutdown request: logs the outcome as `tool` there, then posts the completion with
/// the error to the main loop.
OutcomeReceiver deliverShutdown(std::string_view tool, LogSink log, Post post,
                                ShutdownCompletion completion);

/// For a probe: posts the completion with the outcome to the main loop, logging nothing.
OutcomeReceiver deliverProbe(Post post, ProbeCompletion completion);

}  // namespace velmora
