#include "app/core/presentation_rules.hpp"

#include <array>
#include <nlohmann/json.hpp>

namespace velmora {

namespace {

const nlohmann::json* member(const nlohmann::json& view, std::string_view key) {
    if (!view.is_object()) return nullptr;
    const auto found = view.find(key);
    return found == view.end() ? nullptr : &*found;
}

UIMode simulationMode(const nlohmann::json& view) {
    if (viewFlag(view, "simDone")) return UIMode::simdone;
    if (viewText(view, "state", "idle") == "countdown") return UIMode::count;
    if (viewFlag(view, "lead")) return UIMode::lead;
    return UIMode::home;
}

bool permissionNoticeDue(const nlohmann::json& view) {
    return viewFlag(view, "autoEnabled") && viewText(view, "permState", "") == "denied" &&
           !viewFlag(view, "permDismissed");
}

}  // namespace

std::string_view rawValue(AlertStage stage) {
    switch (stage) {
        case AlertStage::extreme:
            return "extreme";
        case AlertStage::emergency:
            return "emergency";
        case AlertStage::none:
            break;
    }
    return "none";
}

std::string_view modeName(UIMode mode) {
    static constexpr std::array<std::string_view, 9> names{
        "home", "count", "lead", "consent", "relief", "settings", "simdone", "perm", "manual"};
    return names.at(static_cast<std::size_t>(mode));
}

bool viewFlag(const nlohmann::json& view, std::string_view key) {
    const auto* value = member(view, key);
    return value != nullptr && value->is_boolean() && value->get<bool>();
}

std::int64_t viewInteger(const nlohmann::json& view, std::string_view key, std::int64_t fallback) {
    const auto* value = member(view, key);
    if (value == nullptr || !value->is_number_integer()) return fallback;
    return value->get<std::int64_t>();
}

std::string viewText(const nlohmann::json& view, std::string_view key, std::string_view fallback) {
    const auto* value = member(view, key);
    if (value == nullptr || !value->is_string()) return std::string(fallback);
    return value->get<std::string>();
}

bool viewHas(const nlohmann::json& view, std::string_view key) {
    return member(view, key) != nullptr;
}

UIMode pickMode(const nlohmann::json& view, bool wantSettings) {
    if (viewFlag(view, "sim")) return simulationMode(view);
    const auto state = viewText(view, "state", "idle");
    if (state == "countdown" || state == "fired") return UIMode::count;
    if (viewHas(view, "manual")) return UIMode::manual;
    if (viewHas(view, "relief")) return UIMode::relief;
    if (viewFlag(view, "consentNeeded")) return UIMode::consent;
    if (permissionNoticeDue(view)) return UIMode::perm;
    if (wantSettings) return UIMode::settings;
    return UIMode::home;
}

AlertStage liveStageOf(const nlohmann::json& view) {
    if (viewFlag(view, "sim")) return AlertStage::none;
    switch (viewInteger(view, "level", -1)) {
        case 4:
            return AlertStage::emergency;
        case 3:
            return AlertStage::extreme;
        default:
            return AlertStage::none;
    }
}

}  // namespace velmora
