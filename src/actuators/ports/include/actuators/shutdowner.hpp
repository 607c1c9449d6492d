#pragma once

#include <functional>
#include <optional>

#include "actuators/automation_outcome.hpp"
#include "actuators/shutdown_error.hpp"

namespace velmora {

/// Receives the result of a shutdown request: nothing on success, otherwise why it failed.
using ShutdownCompletion = std::function<void(std::optional<ShutdownError> error)>;
/// Receives the result of a permission probe.
using ProbeCompletion = std::function<void(AutomationOutcome outcome)>;

/// The only way the watchdog acts on the machine. Both calls return at once; the completion
/// runs later on the owner's main loop, or, for the dry run's pretended answers, before the
/// call returns. Callers never learn which implementation they hold.
class Shutdowner {
  public:
    Shutdowner() = default;
    virtual ~Shutdowner() = default;
    Shutdowner(const Shutdowner&) = delete;
    Shutdowner& operator=(const Shutdowner&) = delete;
    Shutdowner(Shutdowner&&) = delete;
    Shutdowner& operator=(Shutdowner&&) = delete;

    /// Asks the system to shut the machine down.
    virtual void shutdown(ShutdownCompletion completion) = 0;
    /// Finds out, harmlessly, whether a shutdown would be permitted.
    virtual void probe(ProbeCompletion completion) = 0;
};

}  // namespace velmora
