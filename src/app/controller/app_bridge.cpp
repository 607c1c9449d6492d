#include <nlohmann/json.hpp>

#include <chrono>
#include <cmath>
#include <string_view>
#include <utility>

#include "app/controller/app_controller.hpp"
#include "app/controller/history_view.hpp"
#include "app/core/bridge_scripts.hpp"

namespace velmora {

namespace {

// Both home pages lay out the live readings: the compact one and the expanded dashboard. The
// stage pages take everything they show from the rendered view instead.
bool showsLiveReadings(std::string_view page) {
    return page == "index" || page == "expanded";
}

}  // namespace

void AppController::loadPage(const std::string& name) {
    const auto file = shell_.pageFile(name);
    if (!file) return;
    ui_.pageName = name;
    ui_.shownRender.clear();
    shell_.loadPage(WebView::main, *file, file->parent_path());
    const std::string stage(rawValue(ui_.liveStage));
    // The pages also take a demonstration stage; the application never sets one.
    loop_.postAfter(std::chrono::milliseconds(150), guarded([stage](AppController& app) {
                        app.shell_.evaluate(WebView::main,
                                            stageScript(stage, rawValue(AlertStage::none)));
                    }));
}

void AppController::installUserScripts() {
    const auto script = documentStartScript(token_, rawValue(appearance_));
    shell_.setDocumentStartScript(WebView::main, script);
    // The popup's page is made anew at each opening, with the appearance of that moment.
    if (ui_.heatItem) shell_.setDocumentStartScript(WebView::menu, script);
}

void AppController::pushRender(const nlohmann::json& view) {
    std::string text;
    std::string visible;
    try {
        // The settings page shows "Notify me when it gets hot", a preference of the application.
        auto sent = view;
        sent["notifyWhenHot"] = notifyWhenHot_;
        text = sent.dump();
        // The page shows whole seconds; a tick that changed only the milliseconds would make
        // the web process lay out and paint the same screen again, four times a second.
        auto shown = std::move(sent);
        shown.erase("remainingMs");
        visible = shown.dump() + std::string(modeName(ui_.mode));
    } catch (const nlohmann::json::exception&) {
        return;  // not valid UTF-8: nothing is sent, nothing is reported
    }
    if (visible == ui_.shownRender) return;
    ui_.shownRender = std::move(visible);
    shell_.evaluate(WebView::main, renderCall(text, modeName(ui_.mode)));
}

// A page nobody can see is not pushed to; it is brought up to date when it shows again. The
// stage pages are rendered whatever the window's state: a countdown is never held back.
void AppController::pushLive() {
    if (!showsLiveReadings(ui_.pageName) || !shell_.mainViewSeen()) return;
    shell_.evaluate(WebView::main, liveCall(ui_.liveJSON));
}

void AppController::mainViewSeenAgain() {
    pushLive();
}

void AppController::pushMenu() {
    if (!ui_.heatItem) return;
    if (!history_ || !history_->store()) {
        shell_.evaluate(WebView::menu, liveCall(ui_.liveJSON));
        return;
    }
    // The popup's sparkline shows the last 15 minutes, from the history, before the readings.
    const auto now = static_cast<std::int64_t>(std::floor(loop_.wallNow().secondsSinceEpoch));
    shell_.evaluate(WebView::menu, recentCpuCall(recentCpu(*history_->store(), now)) + ";" +
                                       liveCall(ui_.liveJSON));
}

void AppController::pageFinished(WebView view) {
    if (view == WebView::menu) {
        pushMenu();
    } else {
        ui_.shownRender.clear();  // a render sent while the page was loading may have been lost
        pushLive();
        if (ui_.mode != UIMode::home) tick();  // a stage page is filled in as soon as it is there
    }
}

void AppController::showCoolDownTips() {
    const std::string bullet = "\u2022 ";
    shell_.showSheet(
        AlertSpec{"Cool down tips",
                  bullet + "Quit heavy apps (builds, VMs, browsers with many tabs)\n" + bullet +
                      std::string(texts().tipUnplugPower) + "\n" + bullet +
                      std::string(texts().tipClearVents) + "\n" + bullet +
                      "Pause compiling, video encode, or 3D work until thermal drops\n" + bullet +
                      "If it keeps climbing, shut down to cool off",
                  "OK"});
}

void AppController::userShutdown() {
    if (engine_->simActive()) {
        log("ui: 'Shut Down to Cool Off' pressed during a simulation/demo: stubbed, nothing shut "
            "down");
        return;
    }
    log("ui: 'Shut Down to Cool Off' pressed (user-initiated)");
    std::weak_ptr<AppController*> weak = self_;
    shutdowner_->shutdown([weak](const std::optional<ShutdownError>& error) {
        if (const auto self = weak.lock()) (*self)->onUserShutdownResult(error);
    });
}

void AppController::onUserShutdownResult(const std::optional<ShutdownError>& error) {
    if (!error) return;  // the machine is going down
    log("ui: user shutdown failed: " + error->description());
    engine_->userShutdownFailed(*error);
    tick();
}

}  // namespace velmora
