#pragma once

#include <nlohmann/json.hpp>

#include "policy/forecast.hpp"

namespace velmora::LiveModel {

/// The pages' "forecast" entry: {"kind": "critical"|"levelling"|"steady", "etaSeconds" (critical
/// only, whole seconds), "levelC" (levelling only, whole degrees), "text": the line the pages
/// show ("Critical in about 4 min", "Levelling off at 88 °C", or "")}.
nlohmann::json forecastEntry(const Forecast& forecast);

}  // namespace velmora::LiveModel
