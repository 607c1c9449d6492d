#include "app/core/heat_tooltip.hpp"

#include <cctype>
#include <cmath>
#include <vector>

#include "policy/constants.hpp"

namespace velmora {

namespace {

/// A phrase that follows a dash reads as part of the sentence: "critical in about 4 min".
std::string midSentence(std::string phrase) {
    if (phrase.size() > 1 && std::isupper(static_cast<unsigned char>(phrase[0])) != 0 &&
        std::islower(static_cast<unsigned char>(phrase[1])) != 0) {
        phrase[0] = static_cast<char>(std::tolower(static_cast<unsigned char>(phrase[0])));
    }
    return phrase;
}

std::string joined(const std::vector<std::string>& parts, const std::string& glue) {
    std::string out;
    for (const auto& part : parts) {
        if (!out.empty()) out += glue;
        out += part;
    }
    return out;
}

}  // namespace

std::optional<std::string> celsiusText(std::optional<double> celsius) {
    if (!celsius || !std::isfinite(*celsius)) return std::nullopt;
    return std::to_string(std::lround(*celsius)) + " \u00b0C";
}

HeatTooltip heatTooltip(std::optional<Level> level, std::optional<double> celsius,
                        const std::optional<std::string>& busiest,
                        const std::optional<std::string>& forecast) {
    HeatTooltip tip{std::string(watchdog::appName), {}};
    if (!level) {
        tip.text = "Waiting for the first reading";
        return tip;
    }
    std::string head(label(*level));
    head += " \u00b7 " + celsiusText(celsius).value_or("no CPU temperature");
    std::vector<std::string> tail;
    if (busiest && !busiest->empty() && *level >= Level::warm) tail.push_back(*busiest);
    if (forecast && !forecast->empty()) tail.push_back(midSentence(*forecast));
    tip.text = tail.empty() ? head : head + " \u2014 " + joined(tail, " \u00b7 ");
    return tip;
}

}  // namespace velmora
