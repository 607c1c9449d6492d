#pragma once

#include <optional>
#include <string>

#include "policy/level.hpp"

namespace velmora {

/// The tray item's tooltip: a title and a line of text.
struct HeatTooltip {
    std::string title;
    std::string text;
    bool operator==(const HeatTooltip&) const = default;
};

/// "91 °C", or nothing without a reading.
std::optional<std::string> celsiusText(std::optional<double> celsius);

/// What the item says when hovered: "HOT · 91 °C — cc1plus 96 % · critical in about 4 min".
/// `busiest` ("cc1plus 96 %") is shown from WARM up; `forecast` ("Critical in about 4 min")
/// whenever there is one. Without a level (no reading yet) the item says it is waiting.
HeatTooltip heatTooltip(std::optional<Level> level, std::optional<double> celsius,
                        const std::optional<std::string>& busiest,
                        const std::optional<std::string>& forecast);

}  // namespace velmora
