#include <nlohmann/json.hpp>

#include "app/app_controller.hpp"
#include "metrics/live_names.hpp"
#include "policy/constants.hpp"

namespace velmora {

namespace {

constexpr Rgb simulationAmber{0.98, 0.75, 0.14};
constexpr Rgb emergencyRed{0.97, 0.44, 0.44};

}  // namespace

void AppController::updateChrome(const nlohmann::json& view) {
    if (ui.mode == UIMode::count) {
        const bool sim = viewFlag(view, "sim");
        const bool fired = viewText(view, "state", "idle") == "fired";
        const auto seconds = std::to_string(viewInteger(view, "remaining", 0));
        const std::string word = sim ? "SIMULATION" : "EMERGENCY";
        shell_.showCountdownItem(fired ? "SHUTTING DOWN" : word + " " + seconds + "s",
                                 sim ? simulationAmber : emergencyRed);
        // The title keeps the seconds after the shutdown fired, unlike the menu-bar item.
        const auto title = word + " · " + seconds + "s";
        if (shell_.windowTitle() != title) shell_.setWindowTitle(title);
        return;
    }
    shell_.removeCountdownItem();
    const auto title = ui.mode == UIMode::manual ? std::string("SHUT DOWN MANUALLY") : baseTitle();
    if (shell_.windowTitle() != title) shell_.setWindowTitle(title);
}

void AppController::playSoftChime() {
    if (opts.mute) {
        log("sound: soft chime (muted)");
    } else {
        shell_.playSound("Tink");
    }
}

void AppController::playUrgentAlert() {
    if (opts.mute) {
        log("sound: urgent (muted)");
    } else {
        shell_.playSound("Sosumi");
    }
}

void AppController::startEmergencyRepeat() {
    stopEmergencyRepeat();
    ui.emergencyRepeatTimer = loop_.startRepeating(
        watchdog::emergencyAlarmInterval, guarded([](AppController& app) {
            if (app.ui.demoStage == AlertStage::emergency && app.shell_.windowVisible()) {
                app.playUrgentAlert();
            }
        }));
}

void AppController::stopEmergencyRepeat() {
    if (!ui.emergencyRepeatTimer) return;
    loop_.stop(*ui.emergencyRepeatTimer);
    ui.emergencyRepeatTimer.reset();
}

void AppController::reportStatus(const nlohmann::json& view) {
    status_.stage = viewText(view, "stage", "n/a");
    status_.state = viewText(view, "state", "idle");
    status_.countdown.reset();
    if (status_.state == "countdown") status_.countdown = viewInteger(view, "remaining", 0);
    status_.mode = std::string(modeName(ui.mode));
    status_.simulation = viewFlag(view, "sim");
    shell_.statusChanged(status_);
    notifyTicked(view);
}

void AppController::reportLive(const LiveInputs& inputs) {
    rememberLive(inputs);
    shell_.statusChanged(status_);
}

void AppController::rememberLive(const LiveInputs& inputs) {
    status_.thermal = std::string(thermalName(inputs.thermal));
    status_.cpuTemp.reset();
    if (inputs.cpuTemp) status_.cpuTemp = inputs.cpuTemp->celsius;
    status_.cpuBusy = inputs.cpuBusy;
}

}  // namespace velmora
