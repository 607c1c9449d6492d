#pragma once

#include <string>

#include "policy/sinks.hpp"

namespace velmora {

/// Writes one line when a sink was given; actuators built without a log stay quiet.
inline void logLine(const LogSink& log, const std::string& line) {
    if (log) log(line);
}

}  // namespace velmora
