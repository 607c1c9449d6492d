#include "actuators/script_runner.hpp"

#include <chrono>
#include <type_traits>
#include <utility>
#include <variant>

#include "actuators/child_process.hpp"
#include "actuators/classify_osascript.hpp"

namespace velmora {

ScriptRunner::ScriptRunner(std::string executable) : executable_(std::move(executable)) {}

AutomationOutcome ScriptRunner::run(std::string_view script, Seconds timeout) const {
    const ChildResult result = runChild(executable_, {"-e", std::string(script)}, timeout);
    return std::visit(
        [](const auto& ending) {
            using Ending = std::decay_t<decltype(ending)>;
            if constexpr (std::is_same_v<Ending, ChildNotStarted>) {
                return AutomationOutcome::failed("could not run osascript: " + ending.reason);
            } else if constexpr (std::is_same_v<Ending, ChildTimedOut>) {
                return classifyOsascript(-1, {}, true);
            } else {
                return classifyOsascript(ending.status, ending.standardError, false);
            }
        },
        result);
}

}  // namespace velmora
