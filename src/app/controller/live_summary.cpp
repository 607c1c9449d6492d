#include "app/controller/live_summary.hpp"

#include <array>
#include <cmath>
#include <cstdio>
#include <functional>
#include <vector>

#include "app/core/heat_tooltip.hpp"
#include "metrics/heat_cause.hpp"
#include "metrics/live_model.hpp"
#include "metrics/live_names.hpp"
#include "policy/forecast.hpp"

namespace velmora {

namespace {

std::string formatted(const char* pattern, double value) {
    std::array<char, 64> buffer{};
    std::snprintf(buffer.data(), buffer.size(), pattern, value);
    return buffer.data();
}

std::string rounded(double value) {
    return std::to_string(std::lround(value));
}

std::string percentText(const std::optional<double>& value) {
    return value ? rounded(*value) + "%" : std::string(LiveModel::na);
}

std::string wholeDegreesText(const std::optional<TempReading>& reading) {
    if (!reading || !std::isfinite(reading->celsius)) return std::string(LiveModel::na);
    return std::to_string(static_cast<long long>(std::trunc(reading->celsius)));
}

template <typename Item>
std::string joinedValues(const std::vector<Item>& items, std::function<double(const Item&)> pick) {
    if (items.empty()) return std::string(LiveModel::na);
    std::string text;
    for (const auto& item : items) {
        if (!text.empty()) text += "/";
        text += rounded(pick(item));
    }
    return text;
}

std::string memoryText(const std::optional<MemoryInfo>& memory) {
    if (!memory) return std::string(LiveModel::na);
    return formatted("%.1f", memory->usedGB) + "/" + formatted("%.1f", memory->totalGB) + "GB(" +
           memory->pressure.value_or(std::string(LiveModel::na)) + ")";
}

std::string powerText(const std::optional<PowerReading>& power) {
    if (!power) return std::string(LiveModel::na);
    return formatted("%.1f", power->watts) + "W(" + power->label + ")";
}

std::string coresText(const std::optional<std::vector<double>>& loads) {
    if (!loads) return std::string(LiveModel::na);
    return joinedValues<double>(*loads, [](const double& load) { return load; });
}

}  // namespace

std::string liveSummaryLine(const LiveInputs& in) {
    const auto na = std::string(LiveModel::na);
    return "live: thermal=" + std::string(thermalName(in.thermal)) +
           " label=" + std::string(label(liveLevel(in.thermal))) +
           " cpu=" + percentText(in.cpuBusy) +
           " load=" + (in.load ? formatted("%.1f", *in.load) : na) +
           " ram=" + percentText(in.ramUsed) + " cpuTemp=" + wholeDegreesText(in.cpuTemp) +
           " gpuTemp=" + wholeDegreesText(in.gpuTemp) +
           " battery=" + wholeDegreesText(in.batteryTemp) + " gpu=" + percentText(in.gpuLoad) +
           " cores=" + coresText(in.coreLoads) + " mem=" + memoryText(in.memory) + " fan=" +
           joinedValues<FanReading>(in.fans, [](const FanReading& fan) { return fan.rpm; }) +
           " power=" + powerText(in.power) + " sensors=" + std::to_string(in.sensors.size()) +
           " lowPower=" + (in.lowPower ? "true" : "false") + " FORCED(" +
           (in.forced ? "true" : "false") + ")";
}

std::string heatItemTitle(const LiveInputs& inputs) {
    const auto temperature = inputs.cpuTemp && std::isfinite(inputs.cpuTemp->celsius)
                                 ? std::to_string(std::lround(inputs.cpuTemp->celsius)) + "°"
                                 : std::string(LiveModel::na);
    return std::string(label(liveLevel(inputs.thermal))) + " · " + temperature;
}

HeatColor heatItemColor(const LiveInputs& inputs) {
    switch (liveLevel(inputs.thermal)) {
        case Level::ok:
            return HeatColor::label;
        case Level::warm:
            return HeatColor::yellow;
        default:
            return HeatColor::red;
    }
}

HeatItemDetails heatItemDetails(const LiveInputs& inputs) {
    HeatItemDetails details;
    if (inputs.cpuTemp && std::isfinite(inputs.cpuTemp->celsius)) {
        details.celsius = inputs.cpuTemp->celsius;
    }
    std::optional<std::string> busiest;
    if (inputs.heatCause) busiest = topProcessPhrase(*inputs.heatCause);
    std::optional<std::string> forecast;
    if (inputs.forecast) forecast = forecastPhrase(*inputs.forecast);
    const auto tip = heatTooltip(liveLevel(inputs.thermal), details.celsius, busiest, forecast);
    details.tooltipTitle = tip.title;
    details.tooltipText = tip.text;
    return details;
}

}  // namespace velmora
