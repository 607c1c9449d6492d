#include <cmath>

#include "metrics/live_model.hpp"

namespace velmora::LiveModel {

namespace {

// A number the page cannot read (NaN, infinity) makes the whole document unwritable, as a
// strict JSON writer would have it; nlohmann would quietly write null instead.
bool allNumbersFinite(const nlohmann::json& value) {
    if (value.is_number_float()) return std::isfinite(value.get<double>());
    if (value.is_structured()) {
        for (const auto& child : value) {
            if (!allNumbersFinite(child)) return false;
        }
    }
    return true;
}

}  // namespace

std::string json(const LiveInputs& inputs, Platform platform) {
    try {
        const nlohmann::json document = dictionary(inputs, platform);
        if (!allNumbersFinite(document)) return "{}";
        // Object keys are kept sorted and slashes are never escaped; invalid UTF-8 throws.
        return document.dump();
    } catch (const nlohmann::json::exception&) {
        return "{}";
    }
}

}  // namespace velmora::LiveModel
