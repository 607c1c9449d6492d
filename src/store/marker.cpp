#include "store/marker.hpp"

#include <nlohmann/json.hpp>

#include <cmath>

namespace velmora {

Marker unreadableMarker() {
    return Marker{"", 0, "unreadable marker"};
}

StoreResult<std::string> encodeMarker(const Marker& marker) {
    if (!std::isfinite(marker.peakC)) {
        return StoreError{0, "could not encode the marker: the peak temperature is not a number"};
    }
    // Insertion order, not sorted: the marker is written field by field.
    nlohmann::ordered_json json = nlohmann::ordered_json::object();
    json["at"] = marker.at;
    json["peakC"] = marker.peakC;
    json["reason"] = marker.reason;
    try {
        return json.dump();
    } catch (const nlohmann::ordered_json::type_error&) {
        return StoreError{0, "could not encode the marker: a text is not valid UTF-8"};
    }
}

std::optional<Marker> decodeMarker(std::string_view text) {
    const auto json = nlohmann::json::parse(text, nullptr, false);
    if (!json.is_object()) return std::nullopt;
    const auto at = json.find("at");
    const auto peakC = json.find("peakC");
    const auto reason = json.find("reason");
    if (at == json.end() || !at->is_string()) return std::nullopt;
    if (peakC == json.end() || !peakC->is_number()) return std::nullopt;
    if (reason == json.end() || !reason->is_string()) return std::nullopt;
    return Marker{at->get<std::string>(), peakC->get<double>(), reason->get<std::string>()};
}

}  // namespace velmora
