#include "store/settings.hpp"

#include <nlohmann/json.hpp>

namespace velmora {

StoreResult<std::string> encodeSettings(const Settings& settings) {
    // nlohmann::json keeps object keys sorted, which gives the file its stable key order.
    nlohmann::json json = nlohmann::json::object();
    json["autoShutdown"] = settings.autoShutdown;
    json["consentRecorded"] = settings.consentRecorded;
    if (settings.consentAt) json["consentAt"] = *settings.consentAt;
    try {
        return json.dump(2) + "\n";
    } catch (const nlohmann::json::type_error&) {
        return StoreError{0, "could not encode the settings: the consent time is not valid UTF-8"};
    }
}

std::optional<Settings> decodeSettings(std::string_view text) {
    const auto json = nlohmann::json::parse(text, nullptr, false);
    if (!json.is_object()) return std::nullopt;
    const auto autoShutdown = json.find("autoShutdown");
    const auto consentRecorded = json.find("consentRecorded");
    if (autoShutdown == json.end() || !autoShutdown->is_boolean()) return std::nullopt;
    if (consentRecorded == json.end() || !consentRecorded->is_boolean()) return std::nullopt;
    Settings settings;
    settings.autoShutdown = autoShutdown->get<bool>();
    settings.consentRecorded = consentRecorded->get<bool>();
    const auto consentAt = json.find("consentAt");
    if (consentAt != json.end() && !consentAt->is_null()) {
        if (!consentAt->is_string()) return std::nullopt;
        settings.consentAt = consentAt->get<std::string>();
    }
    return settings;
}

}  // namespace velmora
