#pragma once

#include "policy/timestamp.hpp"

#include <string>

namespace velmora {

/// "yyyy-MM-dd HH:mm:ss.SSS" in the process's local time zone, 24-hour clock, no zone;
/// milliseconds are truncated. Safe to call from any thread.
std::string formatLogTime(Timestamp instant);

}  // namespace velmora
