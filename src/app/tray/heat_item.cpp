#include "app/tray/heat_item.hpp"

#include <utility>

#include "heat_item_parts.hpp"
#include "policy/constants.hpp"

namespace velmora {

namespace {

std::string appIconPrefix() {
    return std::string(bundleIdentifier);
}

}  // namespace

std::string heatIconName(HeatColor color) {
    switch (color) {
        case HeatColor::yellow:
            return appIconPrefix() + "-heat-warm-symbolic";
        case HeatColor::red:
            return appIconPrefix() + "-heat-hot-symbolic";
        case HeatColor::label:
            break;
    }
    return appIconPrefix() + "-heat-normal-symbolic";
}

std::string alarmIconName() {
    return appIconPrefix() + "-alarm-symbolic";
}

std::string HeatItem::Parts::iconName() const {
    if (figureAsText || !icons || !icons->ensurePng(digits(), heatColor)) {
        return heatIconName(heatColor);
    }
    return figureIconName(digits(), heatColor);
}

std::string HeatItem::Parts::label() const {
    if (countdownTitle) return *countdownTitle;
    return figureAsText ? heatTitle : std::string();
}

HeatItem::HeatItem(const std::string& title, const std::filesystem::path& iconSearchPath,
                   HeatItemActions actions)
    : parts_(std::make_unique<Parts>()) {
    parts_->actions = std::move(actions);
    parts_->heatTitle = title;
    parts_->themePath = iconSearchPath;
    parts_->tooltipTitle = std::string(watchdog::appName);
    parts_->tooltipText = "Waiting for the first reading";
    parts_->icons = std::make_unique<RuntimeIconDir>(iconSearchPath);
    if (!parts_->icons->problem().empty()) {
        parts_->log("ui: the panel icon shows no figure: " + parts_->icons->problem());
    }
    buildItemMenu(*parts_);
    startItemService(*parts_);
}

HeatItem::~HeatItem() {
    stopItemService(*parts_);
    destroyItemMenu(*parts_);
}

void HeatItem::show() {
    emitItemSignal(*parts_, "NewIcon");
    const auto text = label();
    emitItemSignal(*parts_, "XAyatanaNewLabel",
                   g_variant_new("(ss)", text.c_str(), "EXTREME HEAT \u00b7 100\u00b0"));
}

void HeatItem::setTitle(const std::string& title, HeatColor color) {
    if (title == parts_->heatTitle && color == parts_->heatColor) return;
    parts_->heatTitle = title;
    parts_->heatColor = color;
    show();
}

void HeatItem::setDetails(const HeatItemDetails& details) {
    const bool figureChanged = figureDigits(details.celsius) != parts_->digits();
    parts_->celsius = details.celsius;
    if (figureChanged) show();
    if (details.tooltipTitle == parts_->tooltipTitle && details.tooltipText == parts_->tooltipText)
        return;
    parts_->tooltipTitle = details.tooltipTitle;
    parts_->tooltipText = details.tooltipText;
    emitItemSignal(*parts_, "NewToolTip");
}

void HeatItem::showCountdown(const std::string& title) {
    if (parts_->countdownTitle == title) return;
    const bool starting = !parts_->countdownTitle;
    parts_->countdownTitle = title;
    show();
    if (starting) emitItemSignal(*parts_, "NewStatus", g_variant_new("(s)", "NeedsAttention"));
}

void HeatItem::endCountdown() {
    if (!parts_->countdownTitle) return;
    parts_->countdownTitle.reset();
    show();
    emitItemSignal(*parts_, "NewStatus", g_variant_new("(s)", "Active"));
}

void HeatItem::setAppearance(AppearancePref pref) {
    for (std::size_t i = 0; i < allAppearances.size(); ++i) {
        setMenuCheck(parts_->appearanceItems[i], allAppearances[i] == pref);
    }
}

void HeatItem::setStartAtLogin(bool on) {
    setMenuCheck(parts_->startAtLoginItem, on);
}

void HeatItem::setNotifyWhenHot(bool on) {
    setMenuCheck(parts_->notifyItem, on);
}

void HeatItem::setFigureAsText(bool on) {
    setMenuCheck(parts_->figureTextItem, on);
    if (on == parts_->figureAsText) return;
    parts_->figureAsText = on;
    show();
}

std::string HeatItem::label() const {
    return parts_->label();
}

std::string HeatItem::iconName() const {
    return parts_->iconName();
}

std::string HeatItem::tooltipText() const {
    return parts_->tooltipText;
}

bool HeatItem::attention() const {
    return parts_->countdownTitle.has_value();
}

bool HeatItem::hostPresent() const {
    return parts_->hostSeen == true;
}

std::filesystem::path HeatItem::runtimeIconFolder() const {
    return parts_->icons ? parts_->icons->path() : std::filesystem::path();
}

}  // namespace velmora
