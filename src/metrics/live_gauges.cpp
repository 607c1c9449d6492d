#include "metrics/live_gauges.hpp"

#include <algorithm>
#include <cmath>

#include "metrics/live_model.hpp"
#include "metrics/number_text.hpp"

namespace velmora::LiveModel {

namespace {

// NaN (a fan whose maximum reads 0, say) becomes an empty gauge rather than broken JSON.
double clampedFill(double fill) {
    return std::isnan(fill) ? 0.0 : std::clamp(fill, 0.0, 1.0);
}

std::string_view tempBand(double celsius) {
    if (celsius < 75) return "Normal";
    if (celsius < 90) return "Warm";
    return "Hot";
}

}  // namespace

nlohmann::json gauge(const std::optional<std::string>& value, double fill, std::string_view stage,
                     const nlohmann::json& extras) {
    nlohmann::json g =
        value ? nlohmann::json{{"value", *value},
                               {"fill", clampedFill(fill)},
                               {"stage", stage},
                               {"ok", true}}
              : nlohmann::json{{"value", na}, {"fill", 0.0}, {"stage", "none"}, {"ok", false}};
    for (const auto& [key, extra] : extras.items())
        g[key] = extra;
    return g;
}

nlohmann::json percentGauge(const std::optional<double>& percent) {
    if (!percent) return gauge(std::nullopt, 0, "none");
    return gauge(wholeText(*percent) + "%", *percent / 100.0, usageStage(*percent));
}

nlohmann::json tempGauge(const std::optional<TempReading>& reading) {
    if (!reading) return gauge(std::nullopt, 0, "none", {{"source", "none"}});
    const double c = reading->celsius;
    return gauge(
        wholeText(c) + "°C", c / 110.0, tempStage(c),
        {{"source", reading->source}, {"short", wholeText(c) + "°"}, {"band", tempBand(c)}});
}

nlohmann::json loadGauge(const std::optional<double>& load, int cores) {
    if (!load) return gauge(std::nullopt, 0, "none");
    const double perCore = *load / std::max(cores, 1);
    return gauge(fixedText(*load, 1), std::min(perCore, 1.0), loadStage(*load, cores));
}

nlohmann::json pressureGauge(const std::optional<std::string>& pressure) {
    if (!pressure) return gauge(std::nullopt, 0, "none");
    if (*pressure == "Critical") return gauge(*pressure, 1.0, "hot");
    if (*pressure == "Warning") return gauge(*pressure, 0.6, "warm");
    return gauge(*pressure, 0.25, "normal");
}

nlohmann::json fanGauge(const std::vector<FanReading>& fans) {
    if (fans.empty()) return gauge(std::nullopt, 0, "none");
    std::string text;
    for (const FanReading& fan : fans) {
        if (!text.empty()) text += "/";
        text += wholeText(fan.rpm);
    }
    const FanReading& first = fans.front();
    return gauge(text, first.rpm / first.maxRPM.value_or(6500.0), "normal");
}

nlohmann::json powerGauge(const std::optional<PowerReading>& power) {
    if (!power) return gauge(std::nullopt, 0, "none", {{"source", "none"}, {"label", "none"}});
    return gauge(fixedText(power->watts, 1) + " W", power->watts / 60.0, "normal",
                 {{"source", power->source}, {"label", power->label}});
}

nlohmann::json batteryGauge(const std::optional<BatteryInfo>& battery) {
    if (!battery) return gauge(std::nullopt, 0, "none", {{"state", na}});
    std::string_view state = "On battery";
    if (battery->charging.value_or(false)) {
        state = "Charging";
    } else if (battery->onAC.value_or(false)) {
        state = "On AC";
    }
    // The battery's charge is shown but deliberately never graded.
    if (!battery->percent) return gauge(std::nullopt, 0, "none", {{"state", state}});
    const int percent = *battery->percent;
    return gauge(std::to_string(percent) + "%", percent / 100.0, "normal", {{"state", state}});
}

}  // namespace velmora::LiveModel
