#include <nlohmann/json.hpp>

#include "app/controller/app_controller.hpp"
#include "metrics/heat_cause.hpp"
#include "metrics/live_names.hpp"

namespace velmora {

namespace {

constexpr Rgb simulationAmber{0.98, 0.75, 0.14};
constexpr Rgb emergencyRed{0.97, 0.44, 0.44};

}  // namespace

void AppController::updateChrome(const nlohmann::json& view) {
    if (ui_.mode == UIMode::count) {
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
    const auto title = ui_.mode == UIMode::manual ? std::string("SHUT DOWN MANUALLY") : baseTitle();
    if (shell_.windowTitle() != title) shell_.setWindowTitle(title);
}

void AppController::playSoftChime() {
    if (opts_.mute) {
        log("sound: soft chime (muted)");
    } else {
        shell_.playSound("Tink");
    }
}

void AppController::reportStatus(const nlohmann::json& view) {
    status_.stage = viewText(view, "stage", "n/a");
    status_.state = viewText(view, "state", "idle");
    status_.countdown.reset();
    if (status_.state == "countdown") status_.countdown = viewInteger(view, "remaining", 0);
    status_.mode = std::string(modeName(ui_.mode));
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
    // Every sample passes here once; the one that brought a rise says what was heating.
    const auto& cause = inputs.heatCause;
    if (cause && cause->rise) log(heatRiseLine(*cause->rise, *cause));
}

}  // namespace velmora
