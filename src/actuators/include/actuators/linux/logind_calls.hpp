#pragma once

#include "actuators/automation_outcome.hpp"
#include "policy/duration.hpp"

namespace velmora {

/// Asks systemd-logind on the system bus whether this user may power the machine off:
/// "yes" is `granted`, "challenge" and "no" are `denied`, anything else `failed`. Blocks for at
/// most `timeout`; never call it on the main thread.
AutomationOutcome askCanPowerOff(Seconds timeout);

/// Asks systemd-logind to power the machine off now, without an interactive password prompt.
/// A refusal by polkit is `denied`; no logind, no answer or any other error is `failed`. The
/// texts keep the bus's own error name and message.
AutomationOutcome requestPowerOff(Seconds timeout);

}  // namespace velmora
