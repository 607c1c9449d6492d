#pragma once

#include <cstdint>
#include <string_view>

#include "actuators/automation_outcome.hpp"

namespace velmora {

/// Reads one finished (or abandoned) run of the Mac's scripting tool: exit status 0 is success,
/// the Automation refusal (-1743, -1744 or its wording) is `denied`, anything else `failed`.
/// `status` is the exit code, or minus the signal number for a child killed by a signal.
AutomationOutcome classifyOsascript(std::int32_t status, std::string_view standardError,
                                    bool timedOut);

}  // namespace velmora
