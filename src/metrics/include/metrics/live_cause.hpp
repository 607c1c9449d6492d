#pragma once

#include <nlohmann/json.hpp>

#include <string>
#include <string_view>

#include "metrics/heat_cause.hpp"

namespace velmora::LiveModel {

/// The pages' "heatCause" object: {"processes":[{"name","pid","percent"}…], "services":[{"name",
/// "percent"}…], "gpu":[…], "text":"yes 99 % · cc1plus 35 %"}, whole percents, names made
/// valid UTF-8.
nlohmann::json heatCauseEntry(const HeatCause& cause);

/// The bytes with each one that is not part of valid UTF-8 replaced by U+FFFD: a process may
/// name itself anything, and one bad name must not blank the pages.
std::string displayableName(std::string_view bytes);

}  // namespace velmora::LiveModel
