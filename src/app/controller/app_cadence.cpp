#include <nlohmann/json.hpp>

#include <chrono>

#include "app/controller/app_controller.hpp"
#include "app/core/presentation_rules.hpp"

namespace velmora {

namespace {

/// The countdown's resolution.
constexpr std::chrono::milliseconds quickTick{250};
/// How long a calm watchdog waits for a sample before it ticks anyway (and looks whether the
/// sampler hangs): longer than the two seconds between the samples of a watchdog that shows
/// none, so that the two never wake the loop one after the other.
constexpr std::chrono::seconds idleTick{3};

}  // namespace

bool AppController::needsQuickTicks(const nlohmann::json& view) const {
    // A countdown, a rehearsal and an emergency (whose alarm repeats on time even without a
    // countdown) count in quarter seconds. Everything else, on every page, changes with a
    // sample (or at once, with a page message or a menu command), so a calm watchdog has
    // something to do only when a sample comes in.
    return viewText(view, "state", "idle") == "countdown" || viewFlag(view, "sim") ||
           ui_.liveStage == AlertStage::emergency;
}

void AppController::setTickRate(bool quick) {
    if (quick) {
        if (idleTimer_) loop_.stop(*idleTimer_);
        idleTimer_.reset();
        if (!pollTimer_) {
            pollTimer_ =
                loop_.startRepeating(quickTick, guarded([](AppController& app) { app.tick(); }));
        }
        return;
    }
    if (pollTimer_) loop_.stop(*pollTimer_);
    pollTimer_.reset();
    // Moved on by every calm tick, so it fires only when no sample came in for a while.
    if (idleTimer_) loop_.stop(*idleTimer_);
    idleTimer_ = loop_.postAfter(idleTick, guarded([](AppController& app) {
                                     app.idleTimer_.reset();
                                     app.tick();
                                 }));
}

void AppController::tickAfterSample() {
    if (!pollTimer_) tick();
}

}  // namespace velmora
