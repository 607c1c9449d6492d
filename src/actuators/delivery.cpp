#include "actuators/delivery.hpp"

#include <string>
#include <utility>

#include "actuators/shutdown_report.hpp"

namespace velmora {
namespace {

// An owner without a main loop gets its completion on the background thread rather than not
// at all; a missing completion means nobody is waiting.
void hand(const Post& post, std::function<void()> work) {
    if (post) {
        post(std::move(work));
    } else {
        work();
    }
}

}  // namespace

OutcomeReceiver deliverShutdown(std::string_view tool, LogSink log, Post post,
                                ShutdownCompletion completion) {
    return [tool = std::string(tool), log = std::move(log), post = std::move(post),
            completion = std::move(completion)](const AutomationOutcome& outcome) {
        std::optional<ShutdownError> error = reportShutdown(outcome, tool, log);
        if (!completion) return;
        hand(post, [completion, error = std::move(error)] { completion(error); });
    };
}

OutcomeReceiver deliverProbe(Post post, ProbeCompletion completion) {
    return [post = std::move(post), completion = std::move(completion)](AutomationOutcome outcome) {
        if (!completion) return;
        hand(post, [completion, outcome = std::move(outcome)] { completion(outcome); });
    };
}

}  // namespace velmora
