#include "metrics/forecast_feed.hpp"

#include <utility>

namespace velmora {

const LimitReading* ForecastFeed::choose(const std::vector<LimitReading>& readings) {
    const LimitReading* nearest = nullptr;
    const LimitReading* current = nullptr;
    for (const LimitReading& reading : readings) {
        if (reading.id == followed_) current = &reading;
        if (!nearest || reading.celsius - reading.limitC > nearest->celsius - nearest->limitC) {
            nearest = &reading;
        }
    }
    if (current && nearest &&
        (nearest->celsius - nearest->limitC) - (current->celsius - current->limitC) <=
            switchMarginC) {
        return current;
    }
    return nearest;
}

std::optional<Forecast> ForecastFeed::sample(const std::vector<LimitReading>& readings,
                                             MonoTime now) {
    const LimitReading* reading = choose(readings);
    std::optional<Forecast> forecast;
    if (reading) {
        if (reading->id != followed_) forecaster_.restart();
        followed_ = reading->id;
        forecaster_.add(now, reading->celsius, reading->limitC);
        forecast = forecaster_.current(now);
        if (forecast) forecast->source = reading->label;
    } else {
        followed_.clear();
        forecaster_.restart();
    }
    noteChange(forecast, reading, now);
    return forecast;
}

void ForecastFeed::noteChange(const std::optional<Forecast>& forecast, const LimitReading* reading,
                              MonoTime now) {
    if (criticalWithin(forecast, clearedBeyond)) lastHeading_ = now;
    // A window started again has no forecast for a few seconds: that alone is no all-clear.
    const bool silent = !forecast && lastHeading_ && now - *lastHeading_ < silenceCleared;
    if (!announced_ && criticalWithin(forecast, forecastLoggedWithin)) {
        announced_ = true;
        announcedSource_ = forecast->source;
        notices_.push_back(forecastLogLine(*forecast));
    } else if (announced_ && !silent && !criticalWithin(forecast, clearedBeyond)) {
        announced_ = false;
        const std::string source = reading ? reading->label : announcedSource_;
        if (reading) {
            notices_.push_back(forecastClearedLine(source, reading->celsius));
        } else {
            notices_.push_back("forecast: no longer heading for critical (" + source +
                               " no longer read)");
        }
    }
}

std::vector<std::string> ForecastFeed::takeNotices() {
    return std::exchange(notices_, {});
}

}  // namespace velmora
