#include <chrono>
#include <string>

#include "engine/engine.hpp"
#include "engine/engine_text.hpp"
#include "policy/constants.hpp"
#include "store/dates.hpp"

// What the user can ask of the engine: rehearse, cancel, consent, switch, dismiss notices.
namespace velmora {

using engine_text::boolText;
using engine_text::integerPart;

namespace {

constexpr const char* kAutoShutdownTurnedOn = "auto-shutdown turned on";
// How long a command waits for its answer to reach the disk before it lets the save go on in
// the background; the ticks wait meanwhile.
constexpr std::chrono::milliseconds kSettingsSaveWait{500};

}  // namespace

void Engine::startSim(MonoTime now) {
    if (realRunning()) {
        emit("stage-c: SIMULATION refused: a real countdown is active");
        return;
    }
    const CountdownConfig rehearsal{watchdog::countdownLength, watchdog::graceLength,
                                    watchdog::staleGap, false};
    sim_.emplace(rehearsal, true);
    simStart_ = now;
    emit("stage-c: SIMULATION started (" + integerPart(watchdog::simulationLeadIn) +
         "s Stage B lead-in + " + integerPart(watchdog::countdownLength) +
         "s countdown). NO shutdown will be run.");
}

void Engine::cancel(MonoTime now) {
    if (sim_) {
        emit("stage-c SIMULATION: cancelled/stopped by user");
        sim_.reset();
        return;
    }
    switch (real_.state()) {
        case CountdownState::countdown:
            emit("stage-c: user pressed Keep working · Cancel during the countdown");
            markerJobs_.clear();
            real_.cancel(now);  // its `cancel` event is deliberately neither logged nor sounded
            firedAt_.reset();
            errorMessage_.clear();
            emit("stage-c: cancelled before the shutdown ran; grace " +
                 integerPart(watchdog::graceLength) + "s");
            break;
        case CountdownState::fired:
            // Once the shutdown has been called it is not undone.
            errorMessage_ = std::string(words_.tooLateToCancel);
            emit(std::string(words_.cancelRefusedLog));
            break;
        case CountdownState::idle:
        case CountdownState::grace:
        case CountdownState::done:
            emit("stage-c: cancel ignored (state " + std::string(rawValue(real_.state())) + ")");
            break;
    }
}

void Engine::dismissSim() {
    // A running rehearsal is stopped by cancel.
    if (!sim_ || sim_->state() != CountdownState::done) return;
    emit("stage-c SIMULATION: dismissed");
    sim_.reset();
}

void Engine::dismissRelief() {
    relief_.reset();
    emit("stage-c: relief screen dismissed");
}

void Engine::dismissManual() {
    manual_.reset();
    emit("stage-c: manual-shutdown notice dismissed");
}

void Engine::dismissPermission() {
    permissionDismissed_ = true;  // for this run only; never saved
    emit("stage-c: permission notice dismissed for this run");
}

void Engine::userShutdownFailed(const ShutdownError& error) {
    emit("stage-c: ERROR user-initiated shutdown failed: " + error.description());
    noteFailure(error);
}

bool Engine::consent(bool on, Timestamp wallNow) {
    return holdAnswer(Settings{on, true, rfc3339(wallNow)}, "stage-c: ERROR saving consent: ",
                      "stage-c: consent recorded: autoShutdown=" + boolText(on));
}

bool Engine::setAuto(bool on, Timestamp wallNow) {
    // Changing the switch counts as consent; the first consent time is kept.
    const auto consentAt = settingsInForce_.consentRecorded
                               ? settingsInForce_.consentAt
                               : std::optional<std::string>(rfc3339(wallNow));
    return holdAnswer(Settings{on, true, consentAt}, "stage-c: ERROR saving setting: ",
                      "stage-c: setting 'Auto-shutdown in emergency' = " + boolText(on) +
                          " (consentRecorded=true)");
}

// The user's answer is in force for this run even when it cannot be saved: a "no" must never
// be overruled by an older "yes" on disk.
bool Engine::holdAnswer(const Settings& answer, const std::string& failurePrefix,
                        const std::string& savedLine) {
    settingsInForce_ = answer;
    const auto error = settingsCache_->keep(answer, kSettingsSaveWait);
    if (error) {
        emit(failurePrefix + error->message);
        emit("stage-c: the answer holds until quit: autoShutdown=" +
             boolText(settingsInForce_.autoShutdown) +
             " enabled=" + boolText(settingsInForce_.enabled()));
    } else {
        emit(savedLine);
    }
    if (settingsInForce_.autoShutdown) probePermission(kAutoShutdownTurnedOn, true);
    return !error;
}

}  // namespace velmora
