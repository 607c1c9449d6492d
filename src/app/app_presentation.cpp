#include <nlohmann/json.hpp>

#include "app/app_controller.hpp"

namespace velmora {

namespace {

bool isUp(AlertStage stage) {
    return stage != AlertStage::none;
}

}  // namespace

void AppController::tick() {
    if (sampler) sampler->replaceIfHung();
    const auto view = engine->tick(loop_.now());
    const auto nextStage = liveStageOf(view);
    const auto nextMode = pickMode(view, ui.wantSettings);
    if (nextMode != ui.mode) enterMode(nextMode);
    if (ui.mode != UIMode::home) pushRender(view);
    updateChrome(view);
    reportStatus(view);
    if (nextStage != ui.liveStage) {
        ui.liveStage = nextStage;
        if (ui.mode == UIMode::home) handleStageChange(true);
    }
    setTickRate(needsQuickTicks(view));
}

void AppController::enterMode(UIMode next) {
    log("ui: mode " + std::string(modeName(ui.mode)) + " -> " + std::string(modeName(next)));
    ui.mode = next;
    if (next == UIMode::home) {
        applyHome();
        return;
    }
    if (ui.pageName != "stagec") loadPage("stagec");
    resizeKeepingBottom(expandedSize, false);
}

void AppController::handleStageChange(bool forceSound) {
    const auto stage = ui.liveStage;
    const bool changed = stage != ui.lastAnnounced;
    ui.lastAnnounced = stage;
    if (ui.mode != UIMode::home) return;
    if (stage == AlertStage::none) {
        loadPage(ui.isExpanded ? "expanded" : "index");
        if (!ui.isExpanded) resizeKeepingBottom(compactSize, false);
        return;
    }
    ui.isExpanded = true;
    loadPage("expanded");
    resizeKeepingBottom(expandedSize, true);
    // An emergency's alarm belongs to the engine's sounder, not to the window.
    if (changed && forceSound && stage == AlertStage::extreme) playSoftChime();
    shell_.announce(stage == AlertStage::extreme ? "Extreme heat" : "Heat emergency");
}

void AppController::applyHome() {
    if (isUp(ui.liveStage)) {
        ui.isExpanded = true;
        if (ui.mode == UIMode::home) loadPage("expanded");
        resizeKeepingBottom(expandedSize, false);
    } else if (ui.isExpanded) {
        loadPage("expanded");
        resizeKeepingBottom(expandedSize, false);
    } else {
        loadPage("index");
        resizeKeepingBottom(compactSize, false);
    }
}

void AppController::expand(bool animate) {
    ui.isExpanded = true;
    if (ui.mode == UIMode::home) loadPage("expanded");
    resizeKeepingBottom(expandedSize, animate);
}

void AppController::collapse(bool animate) {
    // The window stays large while a stage is up, even when a page asks otherwise.
    if (isUp(ui.liveStage) || ui.mode != UIMode::home) return;
    ui.isExpanded = false;
    loadPage("index");
    resizeKeepingBottom(compactSize, animate);
}

void AppController::resizeKeepingBottom(Size contentSize, bool animate) {
    const auto frame = velmora::resizeKeepingBottom(
        shell_.windowFrame(), shell_.frameSizeForContent(contentSize), shell_.visibleScreenFrame());
    shell_.setWindowFrame(frame, animate);
}

void AppController::menuTestEmergency() {
    ui.wantSettings = false;
    engine->startSim(loop_.now());
    tick();
}

}  // namespace velmora
