#pragma once

#include <string_view>

#include "policy/level.hpp"
#include "policy/thermal_state.hpp"

namespace velmora {

/// "Nominal", "Fair", "Serious" or "Critical" (the last for any unknown value too).
std::string_view thermalName(ThermalState state);

/// The ladder level a thermal state stands for; a state without a synthetic temperature counts
/// as beyond critical.
Level liveLevel(ThermalState state);

/// The page key of a level: "normal", "warm", "hot", "extreme", "emergency".
std::string_view stageKey(Level level);

}  // namespace velmora
