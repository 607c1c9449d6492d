#include <cmath>
#include <nlohmann/json.hpp>

#include "app/controller/app_controller.hpp"
#include "app/controller/history_view.hpp"
#include "app/core/page_origin.hpp"
#include "policy/platform_texts.hpp"

namespace velmora {

namespace {

std::optional<std::string> stringMember(const nlohmann::json& body, const char* key) {
    const auto found = body.find(key);
    if (found == body.end() || !found->is_string()) return std::nullopt;
    return found->get<std::string>();
}

/// The body's "on" when it is a boolean; anything else means off.
bool onFlag(const nlohmann::json& body) {
    const auto found = body.find("on");
    return found != body.end() && found->is_boolean() && found->get<bool>();
}

}  // namespace

void AppController::receive(PageMessage message) {
    if (!fromBundledPage(message.mainFrame, message.frameURL)) {
        log("ui: rejected message from a non-bundled page");
        return;
    }
    // Act on the loop, never inside the toolkit's callback.
    loop_.post(guarded([name = std::move(message.name), body = std::move(message.body)](
                           AppController& app) { app.dispatch(name, body); }));
}

void AppController::dispatch(const std::string& name, const nlohmann::json& body) {
    if (name == "size") {
        handleSize(body);
    } else if (name == "stagec") {
        handleEmergencyPageMessage(body);
    } else if (name == "theme") {
        handleTheme(body);
    } else if (name == "heat") {
        handleHeat(body);
    }
}

void AppController::handleSize(const nlohmann::json& body) {
    if (!body.is_string()) return;
    if (body.get<std::string>() != "expand") {
        collapse(true);
        return;
    }
    ui_.isExpanded = true;
    if (ui_.mode == UIMode::home) loadPage("expanded");
    resizeKeepingBottom(expandedSize, true);
}

void AppController::handleTheme(const nlohmann::json& body) {
    if (body.is_object() && stringMember(body, "token") == token_) {
        const auto raw = stringMember(body, "pref");
        if (const auto pref = raw ? appearanceFromRaw(*raw) : std::nullopt) {
            setAppearance(*pref, true);
            return;
        }
    }
    log("ui: rejected theme message");
}

void AppController::handleEmergencyPageMessage(const nlohmann::json& body) {
    if (!body.is_object()) return;
    const auto action = stringMember(body, "action");
    if (!action) return;
    if (stringMember(body, "token") != token_) {
        log("ui: rejected stagec action '" + *action + "': missing/wrong token");
        return;
    }
    runEmergencyPageAction(*action, body);
    // The page may have changed its own controls ahead of the answer: render it again.
    ui_.shownRender.clear();
    tick();
}

void AppController::runEmergencyPageAction(const std::string& action, const nlohmann::json& body) {
    const auto now = loop_.now();
    if (action == "cancel") {
        engine_->cancel(now);
    } else if (action == "consent") {
        engine_->consent(onFlag(body), loop_.wallNow());
    } else if (action == "toggle") {
        engine_->setAuto(onFlag(body), loop_.wallNow());
    } else if (action == "relief") {
        engine_->dismissRelief();
    } else if (action == "simdone") {
        engine_->dismissSim();
    } else if (action == "test") {
        ui_.wantSettings = false;
        engine_->startSim(now);
    } else if (action == "settings") {
        ui_.wantSettings = true;
    } else if (action == "back") {
        ui_.wantSettings = false;
    } else if (action == "tips") {
        showCoolDownTips();
    } else if (action == "openAutomation") {
        log(std::string(texts().openingPermissionSettingsLog));
        const std::string url(texts().automationPaneURL);
        if (parsesAsURL(url)) shell_.openURL(url);
    } else if (action == "recheck") {
        engine_->probePermission("user pressed Check again", true);
    } else if (action == "dismissPerm") {
        engine_->dismissPermission();
    } else if (action == "notify") {
        setNotifyWhenHot(onFlag(body));
    } else if (action == "dismissManual") {
        engine_->dismissManual();
    } else {
        log("ui: unknown stagec action '" + action + "'");
    }
}

void AppController::cancelFromOutside() {
    log("ui: countdown cancel asked from the desktop notification");
    runEmergencyPageAction("cancel", nlohmann::json::object());
    ui_.shownRender.clear();
    tick();
}

void AppController::handleHeat(const nlohmann::json& body) {
    std::optional<std::string> action;
    std::optional<std::string> sentToken;
    if (body.is_object()) {
        action = stringMember(body, "action");
        sentToken = stringMember(body, "token");
    } else if (body.is_string()) {
        action = body.get<std::string>();  // a bare action never carries the token
    }
    if (!action) return;
    if (sentToken != token_) {
        log("ui: rejected heat action '" + *action + "': missing/wrong token");
        return;
    }
    if (*action == "history") {
        sendHistory(body);
        return;
    }
    runHeat(*action);
}

void AppController::sendHistory(const nlohmann::json& body) {
    const auto range = stringMember(body, "range");
    if (!range || !historyRangeSeconds(*range)) {
        log("ui: unknown history range '" + range.value_or("") + "'");
        return;
    }
    // Until the file is read there is nothing to draw; the page asks again with a later push.
    if (!history_ || !history_->store()) return;
    const auto now = static_cast<std::int64_t>(std::floor(loop_.wallNow().secondsSinceEpoch));
    shell_.evaluate(WebView::main, historyCall(historyView(*history_->store(), *range, now)));
}

void AppController::runHeat(const std::string& action) {
    if (action == "shutdown") {
        userShutdown();
    } else if (action == "tips") {
        showCoolDownTips();
    } else if (action == "settings") {
        ui_.wantSettings = true;
        tick();
    } else if (action == "dismiss" || action == "watch" || action == "wait") {
        // Collapsing keeps the window large while a stage is up, so this changes nothing
        // visible; kept so that the page's buttons behave the same everywhere.
        if (ui_.liveStage == AlertStage::extreme) {
            collapse(true);
        }
    } else if (action == "stageEnteredExtreme") {
        if (ui_.lastAnnounced != AlertStage::extreme) playSoftChime();
    }
}

}  // namespace velmora
