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
            sounder_->urgent();
            break;
        case CountdownEventKind::cue:
            sounder_->tick();
            break;
        default:
            break;  // a rehearsal has no other effects
    }
}

void Engine::handleReal(const CountdownEvent& event, MonoTime now) {
    switch (event.kind) {
        case CountdownEventKind::countdownStart:
            errorMessage_.clear();
            manual_.reset();
            sounder_->urgent();
            probePermission("countdown start", false);
            break;
        case CountdownEventKind::cue:
            sounder_->tick();
            break;
        case CountdownEventKind::fire:
            firedAt_ = now;
            runShutdown();
            break;
        case CountdownEventKind::abort:
        case CountdownEventKind::stale:
            markerJobs_.clear();
            break;
        case CountdownEventKind::cooled:
            relief_ = Relief{peak_, true};
            break;
        case CountdownEventKind::simComplete:
        case CountdownEventKind::cancel:
        case CountdownEventKind::graceEnd:
            break;
    }
}

void Engine::runShutdown() {
    const Marker marker{rfc3339(wallClock_()), peak_, "emergency countdown reached 0"};
    // The marker is written beside the shutdown call: a slow disk gets a short wait, never the
    // power-off's delay.
    auto written = markerJobs_.write(marker);
    if (written.wait_for(kMarkerWait) == std::future_status::ready) {
        logMarkerWrite(written.get(), false);
    } else {
        emit("stage-c: WARNING marker not written after " + std::to_string(kMarkerWait.count()) +
             " ms (slow disk); calling the shutdown without waiting for it");
        lateMarker_ = std::move(written);
    }
    emit("stage-c: countdown reached 0; calling the shutdown (" +
         std::string(words_.shutdownMechanism) + ")");
    shutdownCalls_ += 1;
    // Success needs no answer: the machine is going down, and the failsafe covers silence.
    shutdowner_->shutdown(
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
        emit("stage-c: marker written " + markers_.url().string() + " (peak ladder " +
             integerPart(peak_) + ")" + (late ? " after the shutdown call" : ""));
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
    markerJobs_.clear();  // after the write, however slow that is
    errorMessage_ = "Could not shut down: " + error.description();
    noteFailure(error);
    // The latest tick's time, not the completion's: grace is measured on the tick clock.
    real_.shutdownFailed(lastNow_);
    firedAt_.reset();
    sounder_->urgent();
}

void Engine::noteFailure(const ShutdownError& error) {
    if (error.kind == ShutdownError::Kind::denied) {
        permission_ = PermissionState::denied(error.text);
        permissionDismissed_ = false;
        manual_ = ManualFail{std::string(words_.permissionMessage), true};
        return;
    }
    manual_ = ManualFail{std::string(words_.osErrorPrefix) + error.description(), false};
}

void Engine::probePermission(const std::string& reason, bool user) {
    if (user) permissionDismissed_ = false;  // the user asked: show the answer again
    if (probing_) return;
    probing_ = true;
    emit("stage-c: automation permission probe (" + reason + ")");
    shutdowner_->probe([weak = std::weak_ptr<Engine*>(self_)](const AutomationOutcome& outcome) {
        if (const auto self = weak.lock()) (*self)->onProbeResult(outcome);
    });
}

void Engine::onProbeResult(const AutomationOutcome& outcome) {
    probing_ = false;
    switch (outcome.kind) {
        case AutomationOutcome::Kind::denied:
            permission_ = PermissionState::denied(outcome.text);
            emit("stage-c: automation permission: DENIED (" + outcome.text + ")");
            break;
        case AutomationOutcome::Kind::failed:
            permission_ = PermissionState::failed(outcome.text);
            emit("stage-c: automation permission: probe failed (" + outcome.text + ")");
            break;
        case AutomationOutcome::Kind::granted:
            permission_ = PermissionState::granted();
            permissionDismissed_ = false;
            emit("stage-c: automation permission: granted");
            break;
    }
}

}  // namespace velmora
