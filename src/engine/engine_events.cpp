#include <chrono>
#include <memory>
#include <string>

#include "engine/engine.hpp"
#include "engine/engine_text.hpp"
#include "store/dates.hpp"

// The engine's reactions to the countdown's events, the shutdown call and the permission probe.
namespace velmora {

using engine_text::integerPart;

namespace {

// How long the shutdown call waits for the marker to reach the disk.
constexpr std::chrono::milliseconds kMarkerWait{500};

}  // namespace

void Engine::handle(const CountdownEvent& event, MonoTime now, bool simulated) {
    emit(std::string(simulated ? "stage-c SIMULATION" : "stage-c") + ": event " +
         std::string(rawValue(event.kind)) + " remaining=" + std::to_string(event.remaining));
    if (!simulated) {
        handleReal(event, now);
        return;
    }
    switch (event.kind) {
        case CountdownEventKind::simComplete:
            emit("stage-c SIMULATION: complete. shutdown was NOT called.");
            break;
        case CountdownEventKind::countdownStart:
            sounder->urgent();
            break;
        case CountdownEventKind::cue:
            sounder->tick();
            break;
        default:
            break;  // a rehearsal has no other effects
    }
}

void Engine::handleReal(const CountdownEvent& event, MonoTime now) {
    switch (event.kind) {
        case CountdownEventKind::countdownStart:
            errorMessage.clear();
            manual.reset();
            sounder->urgent();
            probePermission("countdown start", false);
            break;
        case CountdownEventKind::cue:
            sounder->tick();
            break;
        case CountdownEventKind::fire:
            firedAt = now;
            runShutdown();
            break;
        case CountdownEventKind::abort:
        case CountdownEventKind::stale:
            markerJobs.clear();
            break;
        case CountdownEventKind::cooled:
            relief = Relief{peak, true};
            break;
        case CountdownEventKind::simComplete:
        case CountdownEventKind::cancel:
        case CountdownEventKind::graceEnd:
            break;
    }
}

void Engine::runShutdown() {
    const Marker marker{rfc3339(wallClock_()), peak, "emergency countdown reached 0"};
    // The marker is written beside the shutdown call: a slow disk gets a short wait, never the
    // power-off's delay.
    auto written = markerJobs.write(marker);
    if (written.wait_for(kMarkerWait) == std::future_status::ready) {
        logMarkerWrite(written.get(), false);
    } else {
        emit("stage-c: WARNING marker not written after " + std::to_string(kMarkerWait.count()) +
             " ms (slow disk); calling the shutdown without waiting for it");
        lateMarker_ = std::move(written);
    }
    emit("stage-c: countdown reached 0; calling the shutdown (" +
         std::string(words_.shutdownMechanism) + ")");
    shutdownCalls += 1;
    // Success needs no answer: the machine is going down, and the failsafe covers silence.
    shutdowner->shutdown(
        [weak = std::weak_ptr<Engine*>(self_)](const std::optional<ShutdownError>& error) {
            const auto self = weak.lock();
            if (self && error) (*self)->onShutdownFailed(*error);
        });
}

void Engine::logMarkerWrite(const WriteError& error, bool late) {
    if (error) {
        emit("stage-c: WARNING could not write marker: " + error->message +
             (late ? " (the shutdown was already called)" : " (shutting down anyway)"));
    } else {
        emit("stage-c: marker written " + markers.url().string() + " (peak ladder " +
             integerPart(peak) + ")" + (late ? " after the shutdown call" : ""));
    }
}

void Engine::reportLateMarker() {
    if (!lateMarker_ || lateMarker_->wait_for(std::chrono::seconds(0)) != std::future_status::ready)
        return;
    logMarkerWrite(lateMarker_->get(), true);
    lateMarker_.reset();
}

void Engine::onShutdownFailed(const ShutdownError& error) {
    emit("stage-c: ERROR shutdown failed: " + error.description() +
         "; clearing marker; telling the user to shut down manually");
    markerJobs.clear();  // after the write, however slow that is
    errorMessage = "Could not shut down: " + error.description();
    noteFailure(error);
    // The latest tick's time, not the completion's: grace is measured on the tick clock.
    real.shutdownFailed(lastNow);
    firedAt.reset();
    sounder->urgent();
}

void Engine::noteFailure(const ShutdownError& error) {
    if (error.kind == ShutdownError::Kind::denied) {
        permission = PermissionState::denied(error.text);
        permissionDismissed = false;
        manual = ManualFail{std::string(words_.permissionMessage), true};
        return;
    }
    manual = ManualFail{std::string(words_.osErrorPrefix) + error.description(), false};
}

void Engine::probePermission(const std::string& reason, bool user) {
    if (user) permissionDismissed = false;  // the user asked: show the answer again
    if (probing) return;
    probing = true;
    emit("stage-c: automation permission probe (" + reason + ")");
    shutdowner->probe([weak = std::weak_ptr<Engine*>(self_)](const AutomationOutcome& outcome) {
        if (const auto self = weak.lock()) (*self)->onProbeResult(outcome);
    });
}

void Engine::onProbeResult(const AutomationOutcome& outcome) {
    probing = false;
    switch (outcome.kind) {
        case AutomationOutcome::Kind::denied:
            permission = PermissionState::denied(outcome.text);
            emit("stage-c: automation permission: DENIED (" + outcome.text + ")");
            break;
        case AutomationOutcome::Kind::failed:
            permission = PermissionState::failed(outcome.text);
            emit("stage-c: automation permission: probe failed (" + outcome.text + ")");
            break;
        case AutomationOutcome::Kind::granted:
            permission = PermissionState::granted();
            permissionDismissed = false;
            emit("stage-c: automation permission: granted");
            break;
    }
}

}  // namespace velmora
