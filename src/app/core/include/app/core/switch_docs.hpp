#pragma once

#include <string>

namespace velmora {

/// The manual page velmora-heat-monitor(1), in roff (man macros), made from the switch table.
std::string manPage();

/// A bash completion script for velmora-heat-monitor, made from the switch table.
std::string bashCompletion();

}  // namespace velmora
