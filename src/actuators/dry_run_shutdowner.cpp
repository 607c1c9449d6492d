#include "actuators/dry_run_shutdowner.hpp"

#include <chrono>
#include <string>
#include <utility>

#include "actuators/background.hpp"
#include "actuators/delivery.hpp"
#include "actuators/log_line.hpp"

namespace velmora {
namespace {

// Half the real probe's limit: a demonstration should not hang on an unanswered prompt.
constexpr std::chrono::seconds realProbeTimeout{60};

}  // namespace

DryRunShutdowner::DryRunShutdowner(LogSink log, DryRunOptions options, Post post,
                                   BlockingProbe realProbe, const PlatformTexts& texts)
    : log_(std::move(log)),
      options_(options),
      post_(std::move(post)),
      realProbe_(std::move(realProbe)),
      texts_(texts) {}

void DryRunShutdowner::shutdown(ShutdownCompletion completion) {
    write("shutdown: DRY-RUN: would run " + std::string(texts_.shutdownTool) + " '" +
          std::string(texts_.shutdownScript) + "'. NOT executed.");
    if (options_.denied) {
        write("shutdown: DRY-RUN: simulating the " + std::string(texts_.simulatedDenialName) +
              " not-authorized error");
        if (completion) completion(ShutdownError::denied(std::string(texts_.simulatedDeniedText)));
        return;
    }
    if (completion) completion(std::nullopt);
}

void DryRunShutdowner::probe(ProbeCompletion completion) {
    if (options_.denied) {
        write("probe: DRY-RUN: simulating denied (" + std::string(texts_.simulatedDenialName) +
              ")");
        if (completion)
            completion(AutomationOutcome::denied(std::string(texts_.simulatedDeniedText)));
    } else if (options_.realProbe) {
        runRealProbe(std::move(completion));
    } else {
        write("probe: DRY-RUN: not run (reported as granted)");
        if (completion) completion(AutomationOutcome::granted());
    }
}

void DryRunShutdowner::runRealProbe(ProbeCompletion completion) {
    write("probe: running the REAL harmless probe: " + std::string(texts_.probeCommand) + " '" +
          std::string(texts_.probeScript) + "'");
    runOffThread(
        [probe = realProbe_] {
            if (!probe) return AutomationOutcome::failed("no real probe on this platform");
            return probe(realProbeTimeout);
        },
        [log = log_,
         deliver = deliverProbe(post_, std::move(completion))](AutomationOutcome outcome) {
            logLine(log, "probe: REAL probe result: " + describe(outcome));
            deliver(std::move(outcome));
        });
}

void DryRunShutdowner::write(const std::string& line) const {
    logLine(log_, line);
}

}  // namespace velmora
