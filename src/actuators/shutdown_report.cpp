#include "actuators/shutdown_report.hpp"

#include <string>

#include "actuators/log_line.hpp"

namespace velmora {

std::optional<ShutdownError> reportShutdown(const AutomationOutcome& outcome, std::string_view tool,
                                            const LogSink& log) {
    const std::string prefix = "shutdown: " + std::string(tool);
    switch (outcome.kind) {
        case AutomationOutcome::Kind::granted:
            logLine(log, prefix + " finished: ok");
            return std::nullopt;
        case AutomationOutcome::Kind::denied:
            logLine(log, prefix + " NOT AUTHORIZED: " + outcome.text);
            return ShutdownError::denied(outcome.text);
        case AutomationOutcome::Kind::failed:
            break;
    }
    logLine(log, prefix + " error: " + outcome.text);
    return ShutdownError::failed(outcome.text);
}

}  // namespace velmora
