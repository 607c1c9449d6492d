#pragma once

#include <string>
#include <string_view>

#include <nlohmann/json.hpp>

#include "metrics/live_inputs.hpp"
#include "policy/level.hpp"
#include "policy/platform_texts.hpp"

namespace velmora::LiveModel {

/// The text of every missing value.
inline constexpr std::string_view na = "n/a";

/// "normal" below 75, "warm" below 90, else "hot".
std::string_view usageStage(double percent);
/// The same thresholds as `usageStage`, in degrees Celsius.
std::string_view tempStage(double celsius);
/// Per-core load below 0.7 is "normal", below 1.0 "warm", else "hot"; 0 cores count as 1.
std::string_view loadStage(double load, int cores);
/// 0.25, 0.5, 0.75, 0.75, 1.0 from `ok` to `blowout`.
double thermalFill(Level level);

/// The dashboard's dictionary: all 29 keys, always present, and "forecast" when there is one. The
/// platform picks the name of the thermal state's source.
nlohmann::json dictionary(const LiveInputs& inputs, Platform platform = hostPlatform);

/// The dictionary as JSON text with sorted keys and unescaped slashes; "{}" if it cannot be
/// written.
std::string json(const LiveInputs& inputs, Platform platform = hostPlatform);

/// "Live · 1 s · Temps: SMC" and its siblings.
std::string footLine(const LiveInputs& inputs);

}  // namespace velmora::LiveModel
