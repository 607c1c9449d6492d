#include "actuators/osascript_shutdowner.hpp"

#include <utility>

#include "actuators/background.hpp"
#include "actuators/delivery.hpp"
#include "policy/platform_texts.hpp"

namespace velmora {

OsascriptShutdowner::OsascriptShutdowner(LogSink log, Post post, ScriptRunner runner)
    : log_(std::move(log)), post_(std::move(post)), runner_(std::move(runner)) {}

void OsascriptShutdowner::shutdown(ShutdownCompletion completion) {
    runOffThread(
        [runner = runner_] { return runner.run(macosTexts.shutdownScript, shutdownTimeout); },
        deliverShutdown(macosTexts.shutdownTool, log_, post_, std::move(completion)));
}

void OsascriptShutdowner::probe(ProbeCompletion completion) {
    runOffThread([runner = runner_] { return runner.run(macosTexts.probeScript, probeTimeout); },
                 deliverProbe(post_, std::move(completion)));
}

}  // namespace velmora
