#include "engine/engine_fakes.hpp"

#include <utility>

namespace velmora::testing {

void ScriptedShutdowner::shutdown(ShutdownCompletion completion) {
    ++shutdownCalls;
    answer(shutdownAnswer,
           [completion = std::move(completion), result = shutdownResult] { completion(result); });
}

void ScriptedShutdowner::probe(ProbeCompletion completion) {
    ++probeCalls;
    answer(probeAnswer,
           [completion = std::move(completion), result = probeResult] { completion(result); });
}

void ScriptedShutdowner::answer(Answer when, std::function<void()> reply) {
    switch (when) {
        case Answer::now:
            reply();
            break;
        case Answer::later:
            queue_.post(std::move(reply));
            break;
        case Answer::never:
            break;
    }
}

}  // namespace velmora::testing
