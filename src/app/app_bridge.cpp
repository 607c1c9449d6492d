#include <nlohmann/json.hpp>

#include <chrono>
#include <utility>

#include "app/app_controller.hpp"
#include "app/bridge_scripts.hpp"

namespace velmora {

void AppController::loadPage(const std::string& name) {
    const auto file = shell_.pageFile(name);
    if (!file) return;
    ui.pageName = name;
    ui.shownRender.clear();
    shell_.loadPage(WebView::main, *file, file->parent_path());
    const std::string stage(rawValue(currentStage()));
    const std::string demo(rawValue(ui.demoStage));
    loop_.postAfter(std::chrono::milliseconds(150), guarded([stage, demo](AppController& app) {
                        app.shell_.evaluate(WebView::main, stageScript(stage, demo));
                    }));
}

void AppController::installUserScripts() {
    shell_.setDocumentStartScript(WebView::main, documentStartScript(token, rawValue(appearance)));
}

void AppController::pushRender(const nlohmann::json& view) {
    std::string text;
    std::string visible;
    try {
        text = view.dump();
        // The page shows whole seconds; a tick that changed only the milliseconds would make
        // the web process lay out and paint the same screen again, four times a second.
        auto shown = view;
        shown.erase("remainingMs");
        visible = shown.dump() + std::string(modeName(ui.mode));
    } catch (const nlohmann::json::exception&) {
        return;  // not valid UTF-8: nothing is sent, nothing is reported
    }
    if (visible == ui.shownRender) return;
    ui.shownRender = std::move(visible);
    shell_.evaluate(WebView::main, renderCall(text, modeName(ui.mode)));
}

void AppController::pushLive() {
    if (ui.pageName == "index") shell_.evaluate(WebView::main, liveCall(ui.liveJSON));
}

void AppController::pushMenu() {
    if (ui.heatItem) shell_.evaluate(WebView::menu, liveCall(ui.liveJSON));
}

void AppController::pageFinished(WebView view) {
    if (view == WebView::menu) {
        pushMenu();
    } else {
        ui.shownRender.clear();  // a render sent while the page was loading may have been lost
        pushLive();
        if (ui.mode != UIMode::home) tick();  // a stage page is filled in as soon as it is there
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
    if (engine->simActive() || ui.demoStage != AlertStage::none) {
        log("ui: 'Shut Down to Cool Off' pressed during a simulation/demo: stubbed, nothing shut "
            "down");
        return;
    }
    log("ui: 'Shut Down to Cool Off' pressed (user-initiated)");
    std::weak_ptr<AppController*> weak = self_;
    shutdowner->shutdown([weak](const std::optional<ShutdownError>& error) {
        if (const auto self = weak.lock()) (*self)->onUserShutdownResult(error);
    });
}

void AppController::onUserShutdownResult(const std::optional<ShutdownError>& error) {
    if (!error) return;  // the machine is going down
    log("ui: user shutdown failed: " + error->description());
    engine->userShutdownFailed(*error);
    tick();
}

}  // namespace velmora
