#include "actuators/delivery.hpp"

#include <string>
#include <utility>

#include "actuators/shutdown_report.hpp"

namespace velmora {

OutcomeReceiver deliverShutdown(std::string_view tool, LogSink log, Post post,
                                ShutdownCompletion completion) {
    return [tool = std::string(tool), log = std::move(log), post = std::move(post),
            completion = std::move(completion)](const AutomationOutcome& outcome) {
        std::optional<ShutdownError> error = reportShutdown(outcome, tool, log);
        post([completion, error = std::move(error)] { completion(error); });
    };
}

OutcomeReceiver deliverProbe(Post post, ProbeCompletion completion) {
    return [post = std::move(post), completion = std::move(completion)](AutomationOutcome outcome) {
        post([completion, outcome = std::move(outcome)] { completion(outcome); });
    };
}

}  // namespace velmora
