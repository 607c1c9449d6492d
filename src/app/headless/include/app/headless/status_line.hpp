#pragma once

#include <optional>
#include <string>

#include "app/core/status_report.hpp"

namespace velmora {

/// The one terminal line kept up to date: stage, thermal word, CPU temperature and load, and
/// the seconds left while a countdown runs, e.g.
/// "EMERGENCY · thermal Critical · CPU 56°C 12% · COUNTDOWN 7s".
std::string statusLineText(const StatusReport& report);

/// A line worth printing for good when the stage, the countdown state or the page mode
/// changed since `previous` (always for the first report); nothing otherwise.
std::optional<std::string> changeLine(const std::optional<StatusReport>& previous,
                                      const StatusReport& next);

}  // namespace velmora
