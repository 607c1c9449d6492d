#pragma once

#include <optional>
#include <string>

#include "policy/duration.hpp"

// Small renderings shared by the engine's log lines and view.
namespace velmora::engine_text {

/// "true" or "false".
inline std::string boolText(bool value) {
    return value ? "true" : "false";
}

/// The integer part of a temperature or a duration, truncated toward zero; "n/a" for a value
/// that has none (absent, or not finite), so that an odd reading can never break a log line.
std::string integerPart(std::optional<double> value);
/// The whole seconds of a duration, as `integerPart` writes them.
std::string integerPart(Seconds span);

}  // namespace velmora::engine_text
