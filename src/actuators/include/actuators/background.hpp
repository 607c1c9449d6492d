#pragma once

#include <functional>

#include "actuators/automation_outcome.hpp"

namespace velmora {

/// Runs the slow, blocking `work` on a new background thread and hands its outcome to `deliver`
/// on that thread. When no thread can be started, `deliver` receives a `failed` outcome on the
/// calling thread instead, so a result always arrives.
void runOffThread(std::function<AutomationOutcome()> work,
                  std::function<void(AutomationOutcome)> deliver);

}  // namespace velmora
