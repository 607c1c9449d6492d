// The GTK shell's tray item, its live-readings popup and the countdown shown in the panel.
#include <utility>

#include "app/core/menu_model.hpp"
#include "app/core/resource_dirs.hpp"
#include "app/gtk/gtk_shell.hpp"
#include "app/linux/autostart.hpp"

namespace velmora {

PageView* GtkShell::pageView(WebView view) const {
    if (view == WebView::main) return mainView_.get();
    return popup_ ? popup_->view() : nullptr;
}

void GtkShell::addOwnIcons() const {
    const auto icons = iconSearchPath(resources_);
    auto* theme = gtk_icon_theme_get_default();
    if (!icons.empty() && theme != nullptr) {
        gtk_icon_theme_append_search_path(theme, icons.c_str());
    }
}

void GtkShell::createHeatItem(const std::string& title, const std::string& documentStartScript,
                              Size popoverSize) {
    if (heatItem_) return;
    popup_ =
        std::make_unique<TrayPopup>(popoverSize, resources_, log_,
                                    PageView::Callbacks{[this](PageMessage message) {
                                                            if (events_.message)
                                                                events_.message(std::move(message));
                                                        },
                                                        [this] {
                                                            if (events_.pageFinished)
                                                                events_.pageFinished(WebView::menu);
                                                        }});
    popup_->setDocumentStartScript(documentStartScript);
    heatItem_ = std::make_unique<HeatItem>(title, iconSearchPath(resources_), heatItemActions());
    heatItem_->setAppearance(appearance_);
    const auto entry = autostartEntryPath(PlatformEnvironment::current());
    heatItem_->setStartAtLogin(entry && autostartEnabled(*entry));
}

HeatItemActions GtkShell::heatItemActions() {
    HeatItemActions actions;
    const auto menu = [this](MenuAction action) {
        return [this, action] {
            if (events_.menu) events_.menu(action);
        };
    };
    actions.liveReadings = [this] {
        if (!popoverShown() && events_.heatItemActivated) events_.heatItemActivated();
    };
    actions.openWindow = [this] {
        if (window_ != nullptr) gtk_window_present(window_);
    };
    actions.testEmergency = menu(MenuAction::testEmergency);
    actions.chooseAppearance = [this](AppearancePref pref) {
        if (events_.menu) events_.menu(appearanceAction(pref));
    };
    actions.startAtLogin = [this](bool on) { return switchStartAtLogin(on); };
    // The check mark has moved already; the controller keeps the choice and confirms it.
    actions.notifyWhenHot = [menu](bool /*on*/) { menu(MenuAction::notifyWhenHot)(); };
    actions.figureAsText = [menu](bool /*on*/) { menu(MenuAction::figureAsText)(); };
    actions.quit = menu(MenuAction::quit);
    actions.log = log_;
    return actions;
}

bool GtkShell::switchStartAtLogin(bool on) {
    const auto entry = autostartEntryPath(PlatformEnvironment::current());
    if (!entry) {
        log_("ui: cannot start at login: neither XDG_CONFIG_HOME nor HOME is set");
        return false;
    }
    const auto problem =
        on ? enableAutostart(*entry, runningExecutable()) : disableAutostart(*entry);
    if (problem) {
        log_("ui: start at login not changed: " + *problem);
    } else {
        log_(std::string("ui: start at login ") + (on ? "on" : "off"));
    }
    return autostartEnabled(*entry);
}

void GtkShell::setHeatItemDetails(const HeatItemDetails& details) {
    if (heatItem_) heatItem_->setDetails(details);
}

void GtkShell::checkHeatItemEntry(MenuAction action, bool checked) {
    if (!heatItem_) return;
    if (action == MenuAction::notifyWhenHot) heatItem_->setNotifyWhenHot(checked);
    if (action == MenuAction::figureAsText) heatItem_->setFigureAsText(checked);
}

void GtkShell::setHeatItemTitle(const std::string& title, HeatColor color) {
    if (heatItem_) heatItem_->setTitle(title, color);
}

bool GtkShell::popoverShown() const {
    return popup_ && popup_->shown();
}

void GtkShell::showPopover() {
    if (popup_) popup_->show();
}

void GtkShell::closePopover() {
    if (popup_) popup_->close();
}

void GtkShell::showCountdownItem(const std::string& title, Rgb /*color*/) {
    // A panel label has no colour: the attention status and the alarm icon mark it instead.
    if (heatItem_) heatItem_->showCountdown(title);
}

void GtkShell::removeCountdownItem() {
    if (heatItem_) heatItem_->endCountdown();
}

}  // namespace velmora
