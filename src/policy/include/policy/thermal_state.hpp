#pragma once

#include <optional>
#include <string_view>

namespace velmora {

/// The operating system's thermal state, with the platform's raw values.
enum class ThermalState : int { nominal = 0, fair = 1, serious = 2, critical = 3 };

/// Synthetic Celsius of a state (55, 78, 96, 108): serious lands on `extreme` and critical on
/// `blowout`, never on `hot`. Unknown raw values give nothing.
std::optional<double> thermalStateToC(ThermalState state);

/// Parses "nominal", "fair", "serious" or "critical" in any letter case; no trimming.
std::optional<ThermalState> thermalStateNamed(std::string_view name);

/// The lower-case name of a state; unknown values give nothing.
std::optional<std::string_view> thermalStateName(ThermalState state);

}  // namespace velmora
