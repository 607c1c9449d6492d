#include "metrics/live_forecast.hpp"

#include <algorithm>
#include <cmath>

namespace velmora::LiveModel {

namespace {

const char* kindName(ForecastKind kind) {
    switch (kind) {
        case ForecastKind::critical:
            return "critical";
        case ForecastKind::levelling:
            return "levelling";
        case ForecastKind::steady:
            return "steady";
    }
    return "steady";
}

// Clamped so that a wild figure can never become a number the page cannot read.
long long whole(double value) {
    return std::llround(std::clamp(value, -1e9, 1e9));
}

}  // namespace

nlohmann::json forecastEntry(const Forecast& forecast) {
    nlohmann::json entry = {{"kind", kindName(forecast.kind)},
                            {"text", forecastHeadline(forecast)}};
    if (forecast.kind == ForecastKind::critical && forecast.eta) {
        entry["etaSeconds"] = whole(forecast.eta->count());
    }
    if (forecast.kind == ForecastKind::levelling && forecast.levelC) {
        entry["levelC"] = whole(*forecast.levelC);
    }
    return entry;
}

}  // namespace velmora::LiveModel
