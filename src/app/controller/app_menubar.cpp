#include <nlohmann/json.hpp>

#include "app/controller/app_controller.hpp"
#include "app/controller/live_summary.hpp"
#include "app/core/bridge_scripts.hpp"
#include "app/core/notify_preference.hpp"
#include "metrics/live_model.hpp"

namespace velmora {

void AppController::buildMenus() {
    shell_.installMainMenu(mainMenu());
    updateAppearanceMenu();
}

void AppController::setupMenuBarItem() {
    shell_.createHeatItem("Heat \u2026", documentStartScript(token_, rawValue(appearance_)),
                          popoverSize);
    ui_.heatItem = true;
    shell_.setMenuItemChecked(MenuAction::notifyWhenHot, notifyWhenHot_);
    shell_.setMenuItemChecked(MenuAction::figureAsText, figureAsText_);
    if (const auto file = shell_.pageFile("menubar")) {
        shell_.loadPage(WebView::menu, *file, file->parent_path());
    }
}

void AppController::updateAppearanceMenu() {
    for (const auto pref : allAppearances) {
        shell_.setMenuItemChecked(appearanceAction(pref), pref == appearance_);
    }
}

void AppController::setAppearance(AppearancePref pref, bool fromPage) {
    appearance_ = pref;
    if (const auto problem = saveAppearance(pref, *services_.preferences)) {
        log("ui: could not save the appearance preference: " + *problem);
    }
    shell_.applyAppearance(pref);
    installUserScripts();
    const auto call = themeCall(rawValue(pref));
    if (!fromPage) shell_.evaluate(WebView::main, call);
    if (ui_.heatItem) shell_.evaluate(WebView::menu, call);
    updateAppearanceMenu();
    log("ui: appearance " + std::string(rawValue(pref)));
}

void AppController::setNotifyWhenHot(bool on) {
    notifyWhenHot_ = on;
    if (const auto problem = saveNotifyWhenHot(on, *services_.preferences)) {
        log("ui: could not save 'Notify me when it gets hot': " + *problem);
    }
    shell_.setMenuItemChecked(MenuAction::notifyWhenHot, on);
    ui_.shownRender.clear();  // the settings page shows the switch
    log(std::string("ui: notify me when it gets hot ") + (on ? "on" : "off"));
}

void AppController::setFigureAsText(bool on) {
    figureAsText_ = on;
    if (const auto problem = services_.preferences->setText(figureAsTextKey, on ? "on" : "off")) {
        log("ui: could not save 'Temperature as text beside the icon': " + *problem);
    }
    shell_.setMenuItemChecked(MenuAction::figureAsText, on);
    log(std::string("ui: temperature as text beside the icon ") + (on ? "on" : "off"));
}

void AppController::sampleLive() {
    if (sampler_) {
        sampler_->request();  // the sample comes back through receiveLive
        return;
    }
    presentLive(live_->sample(loop_.wallNow()), static_cast<std::uint64_t>(ui_.liveCount) + 1);
}

void AppController::receiveLive(const LiveDelivery& delivery) {
    if (!delivery.summary.empty()) logFirstSample(delivery.summary, delivery.inputs);
    for (const std::string& notice : delivery.notices)
        log(notice);
    sampledLimits_ = delivery.limits;
    presentLive(delivery.inputs, delivery.sequence);
}

void AppController::presentLive(const LiveInputs& inputs, std::uint64_t sequence) {
    ui_.liveJSON = LiveModel::json(inputs);
    // One summary in each ten samples, the first one shown of them: a calm watchdog may not
    // be shown each sample.
    const auto previous = static_cast<std::uint64_t>(ui_.liveCount);
    ui_.liveCount = static_cast<std::int64_t>(sequence);
    if (previous == 0 || (sequence - 1) / 10 != (previous - 1) / 10) log(liveSummaryLine(inputs));
    updateMenuBarItem(inputs);
    pushLive();
    if (ui_.heatItem && shell_.popoverShown()) pushMenu();
    reportLive(inputs);
    notifySampled(inputs);
    tickAfterSample();
}

void AppController::updateMenuBarItem(const LiveInputs& inputs) {
    if (!ui_.heatItem) return;
    shell_.setHeatItemTitle(heatItemTitle(inputs), heatItemColor(inputs));
    shell_.setHeatItemDetails(heatItemDetails(inputs));
}

void AppController::toggleMenuPopover() {
    if (!ui_.heatItem) return;
    if (shell_.popoverShown()) {
        shell_.closePopover();
        return;
    }
    shell_.showPopover();
    pushMenu();
}

void AppController::menuAction(MenuAction action) {
    if (const auto pref = appearanceOf(action)) {
        setAppearance(*pref, false);
        return;
    }
    switch (action) {
        case MenuAction::settings:
            ui_.wantSettings = true;
            tick();
            break;
        case MenuAction::quit:
            shell_.terminate();
            break;
        case MenuAction::testEmergency:
            menuTestEmergency();
            break;
        case MenuAction::expand:
            expand(true);
            break;
        case MenuAction::collapse:
            collapse(true);
            break;
        case MenuAction::notifyWhenHot:
            setNotifyWhenHot(!notifyWhenHot_);
            break;
        case MenuAction::figureAsText:
            setFigureAsText(!figureAsText_);
            break;
        default:
            break;
    }
}

}  // namespace velmora
