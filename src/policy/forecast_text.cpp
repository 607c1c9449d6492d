#include <cmath>

#include "policy/forecast.hpp"

namespace velmora {

namespace {

std::string degrees(double celsius) {
    return std::to_string(std::lround(celsius)) + " °C";
}

// The ETA as people say it: under a minute, or whole minutes.
std::string etaWords(Seconds eta) {
    if (eta.count() < 60.0) return "under a minute";
    return "about " + std::to_string(std::lround(eta.count() / 60.0)) + " min";
}

// Whole seconds to the nearest ten: the estimate is not better than that.
long roundedSeconds(Seconds eta) {
    return 10 * std::lround(eta.count() / 10.0);
}

}  // namespace

std::string forecastPhrase(const Forecast& forecast) {
    switch (forecast.kind) {
        case ForecastKind::critical:
            if (!forecast.eta || !(*forecast.eta < forecastShownWithin)) return "";
            return "critical in " + etaWords(*forecast.eta);
        case ForecastKind::levelling:
            return forecast.levelC ? "levelling off at " + degrees(*forecast.levelC) : "";
        case ForecastKind::steady:
            return "";
    }
    return "";
}

std::string forecastHeadline(const Forecast& forecast) {
    std::string text = forecastPhrase(forecast);
    if (!text.empty() && text[0] >= 'a' && text[0] <= 'z')
        text[0] = static_cast<char>(text[0] - 'a' + 'A');
    return text;
}

bool criticalWithin(const std::optional<Forecast>& forecast, Seconds within) {
    return forecast && forecast->kind == ForecastKind::critical && forecast->eta &&
           *forecast->eta < within;
}

std::string forecastLogLine(const Forecast& forecast) {
    const Seconds eta = forecast.eta.value_or(Seconds(0));
    std::string course;
    if (forecast.levelC) {
        course = "rising toward " + degrees(*forecast.levelC);
    } else if (forecast.risePerMinuteC) {
        const double tenths = std::round(*forecast.risePerMinuteC * 10.0) / 10.0;
        const long whole = std::lround(tenths * 10.0);
        course =
            "rising " + std::to_string(whole / 10) + "." + std::to_string(whole % 10) + " °C/min";
    } else {
        course = "rising";
    }
    return "forecast: critical in about " + std::to_string(roundedSeconds(eta)) + " s (" +
           forecast.source + " " + degrees(forecast.celsius) + ", " + course + "; limit " +
           degrees(forecast.limitC) + ")";
}

std::string forecastClearedLine(const std::string& source, double celsius) {
    return "forecast: no longer heading for critical (" + source + " " + degrees(celsius) + ")";
}

}  // namespace velmora
