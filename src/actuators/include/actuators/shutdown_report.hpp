#pragma once

#include <optional>
#include <string_view>

#include "actuators/automation_outcome.hpp"
#include "actuators/shutdown_error.hpp"
#include "policy/sinks.hpp"

namespace velmora {

/// Turns the outcome of a shutdown request into the caller's error and logs it:
/// "shutdown: <tool> finished: ok", "shutdown: <tool> NOT AUTHORIZED: <text>" or
/// "shutdown: <tool> error: <text>".
std::optional<ShutdownError> reportShutdown(const AutomationOutcome& outcome, std::string_view tool,
                                            const LogSink& log);

}  // namespace velmora
