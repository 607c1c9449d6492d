#include "actuators/linux/logind_shutdowner.hpp"

#include <utility>

#include "actuators/background.hpp"
#include "actuators/delivery.hpp"
#include "actuators/linux/logind_calls.hpp"
#include "policy/platform_texts.hpp"

namespace velmora {

LogindShutdowner::LogindShutdowner(LogSink log, Post post, LogindTimeouts timeouts)
    : log_(std::move(log)), post_(std::move(post)), timeouts_(timeouts) {}

void LogindShutdowner::shutdown(ShutdownCompletion completion) {
    runOffThread([timeout = timeouts_.shutdown] { return requestPowerOff(timeout); },
                 deliverShutdown(linuxTexts.shutdownTool, log_, post_, std::move(completion)));
}

void LogindShutdowner::probe(ProbeCompletion completion) {
    runOffThread([timeout = timeouts_.probe] { return askCanPowerOff(timeout); },
                 deliverProbe(post_, std::move(completion)));
}

}  // namespace velmora
