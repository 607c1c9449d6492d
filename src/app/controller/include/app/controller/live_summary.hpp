#pragma once

#include <string>

#include "app/core/shell.hpp"
#include "metrics/live_inputs.hpp"

namespace velmora {

/// The summary of one live sample that the log gets every tenth sample:
/// "live: thermal=… label=… cpu=…% load=… ram=… cpuTemp=… gpuTemp=… battery=… gpu=…% cores=…
/// mem=… fan=… power=… sensors=… lowPower=… FORCED(…)"; an absent value reads "n/a".
std::string liveSummaryLine(const LiveInputs& inputs);

/// The heat item's title: the level's label, " · " and the CPU temperature rounded to whole
/// degrees with "°", or the live model's "n/a".
std::string heatItemTitle(const LiveInputs& inputs);
/// The system's label colour at ok, yellow at warm, red above.
HeatColor heatItemColor(const LiveInputs& inputs);
/// The heat item's figure and tooltip.
HeatItemDetails heatItemDetails(const LiveInputs& inputs);

}  // namespace velmora
