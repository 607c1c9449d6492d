#include <nlohmann/json.hpp>

#include "app/controller/app_controller.hpp"

namespace velmora {

namespace {

bool isUp(AlertStage stage) {
    return stage != AlertStage::none;
}

}  // namespace

void AppController::tick() {
    if (sampler_) sampler_->replaceIfHung();
    const auto view = engine_->tick(loop_.now());
    const auto nextStage = liveStageOf(view);
    const auto nextMode = pickMode(view, ui_.wantSettings);
    if (nextMode != ui_.mode) enterMode(nextMode);
    if (ui_.mode != UIMode::home) pushRender(view);
    updateChrome(view);
    reportStatus(view);
    if (nextStage != ui_.liveStage) {
        ui_.liveStage = nextStage;
        if (ui_.mode == UIMode::home) handleStageChange(true);
    }
    setTickRate(needsQuickTicks(view));
}

void AppController::enterMode(UIMode next) {
    log("ui: mode " + std::string(modeName(ui_.mode)) + " -> " + std::string(modeName(next)));
    ui_.mode = next;
    if (next == UIMode::home) {
        applyHome();
        return;
    }
    if (ui_.pageName != "stagec") loadPage("stagec");
    resizeKeepingBottom(expandedSize, false);
}

void AppController::handleStageChange(bool forceSound) {
    const auto stage = ui_.liveStage;
    const bool changed = stage != ui_.lastAnnounced;
    ui_.lastAnnounced = stage;
    if (ui_.mode != UIMode::home) return;
    if (stage == AlertStage::none) {
        loadPage(ui_.isExpanded ? "expanded" : "index");
        if (!ui_.isExpanded) resizeKeepingBottom(compactSize, false);
        return;
    }
    ui_.isExpanded = true;
    loadPage("expanded");
    resizeKeepingBottom(expandedSize, true);
    // An emergency's alarm belongs to the engine's sounder, not to the window.
    if (changed && forceSound && stage == AlertStage::extreme) playSoftChime();
    shell_.announce(stage == AlertStage::extreme ? "Extreme heat" : "Heat emergency");
}

void AppController::applyHome() {
    if (isUp(ui_.liveStage)) {
        ui_.isExpanded = true;
        if (ui_.mode == UIMode::home) loadPage("expanded");
        resizeKeepingBottom(expandedSize, false);
    } else if (ui_.isExpanded) {
        loadPage("expanded");
        resizeKeepingBottom(expandedSize, false);
    } else {
        loadPage("index");
        resizeKeepingBottom(compactSize, false);
    }
}

void AppController::expand(bool animate) {
    ui_.isExpanded = true;
    if (ui_.mode == UIMode::home) loadPage("expanded");
    resizeKeepingBottom(expandedSize, animate);
}

void AppController::collapse(bool animate) {
    // The window stays large while a stage is up, even when a page asks otherwise.
    if (isUp(ui_.liveStage) || ui_.mode != UIMode::home) return;
    ui_.isExpanded = false;
    loadPage("index");
    resizeKeepingBottom(compactSize, animate);
}

void AppController::resizeKeepingBottom(Size contentSize, bool animate) {
    const auto frame = velmora::resizeKeepingBottom(
        shell_.windowFrame(), shell_.frameSizeForContent(contentSize), shell_.visibleScreenFrame());
    shell_.setWindowFrame(frame, animate);
}

void AppController::menuTestEmergency() {
    ui_.wantSettings = false;
    engine_->startSim(loop_.now());
    tick();
}

}  // namespace velmora
