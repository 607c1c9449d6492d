#include <string>

#include "engine/engine.hpp"
#include "engine/engine_text.hpp"
#include "policy/constants.hpp"

// What the user can ask of the engine: rehearse, cancel, consent, switch, dismiss notices.
namespace velmora {

using engine_text::boolText;
using engine_text::integerPart;

namespace {

constexpr const char* kAutoShutdownTurnedOn = "auto-shutdown turned on";

}  // namespace

void Engine::startSim(MonoTime now) {
    if (realRunning()) {
        emit("stage-c: SIMULATION refused: a real countdown is active");
        return;
    }
    const CConfig rehearsal{SC::countdownLen, SC::graceLen, SC::staleGap, false};
    sim.emplace(rehearsal, true);
    simStart = now;
    emit("stage-c: SIMULATION started (" + integerPart(SC::simLead) + "s Stage B lead-in + " +
         integerPart(SC::countdownLen) + "s countdown). NO shutdown will be run.");
}

void Engine::cancel(MonoTime now) {
    if (sim) {
        emit("stage-c SIMULATION: cancelled/stopped by user");
        sim.reset();
        return;
    }
    switch (real.state) {
        case CState::countdown:
            emit("stage-c: user pressed Keep working · Cancel during the countdown");
            markers.clear();
            real.cancel(now);  // its `cancel` event is deliberately neither logged nor sounded
            firedAt.reset();
            errMsg.clear();
            emit("stage-c: cancelled before the shutdown ran; grace " + integerPart(SC::graceLen) +
                 "s");
            break;
        case CState::fired:
            // Once the shutdown has been called it is not undone.
            errMsg = std::string(words_.tooLateToCancel);
            emit(std::string(words_.cancelRefusedLog));
            break;
        case CState::idle:
        case CState::grace:
        case CState::done:
            emit("stage-c: cancel ignored (state " + std::string(rawValue(real.state)) + ")");
            break;
    }
}

void Engine::dismissSim() {
    if (!sim || sim->state != CState::done) return;  // a running rehearsal is stopped by cancel
    emit("stage-c SIMULATION: dismissed");
    sim.reset();
}

void Engine::dismissRelief() {
    relief.reset();
    emit("stage-c: relief screen dismissed");
}

void Engine::dismissManual() {
    manual.reset();
    emit("stage-c: manual-shutdown notice dismissed");
}

void Engine::dismissPerm() {
    permDismissed = true;  // for this run only; never saved
    emit("stage-c: permission notice dismissed for this run");
}

void Engine::userShutdownFailed(const ShutdownError& error) {
    emit("stage-c: ERROR user-initiated shutdown failed: " + error.description());
    noteFailure(error);
}

bool Engine::consent(bool on, Timestamp wallNow) {
    return adoptSaved(settings.recordConsent(on, wallNow), "stage-c: ERROR saving consent: ",
                      "stage-c: consent recorded: autoShutdown=" + boolText(on));
}

bool Engine::setAuto(bool on, Timestamp wallNow) {
    return adoptSaved(settings.setAutoShutdown(on, wallNow), "stage-c: ERROR saving setting: ",
                      "stage-c: setting 'Auto-shutdown in emergency' = " + boolText(on) +
                          " (consentRecorded=true)");
}

bool Engine::adoptSaved(const StoreResult<Settings>& saved, const std::string& failurePrefix,
                        const std::string& savedLine) {
    if (!saved) {
        emit(failurePrefix + saved.error().message);  // the previous settings stay in force
        return false;
    }
    set = *saved;
    emit(savedLine);
    if (set.autoShutdown) probePermission(kAutoShutdownTurnedOn, true);
    return true;
}

}  // namespace velmora
