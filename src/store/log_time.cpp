#include "store/log_time.hpp"

#include <cmath>
#include <cstdio>
#include <ctime>

namespace velmora {

std::string formatLogTime(Timestamp instant) {
    const double secs = std::isfinite(instant.secondsSinceEpoch) ? instant.secondsSinceEpoch : 0;
    const double whole = std::floor(secs);
    const auto millis = static_cast<int>(std::fmin(std::floor((secs - whole) * 1000), 999));
    const auto time = static_cast<std::time_t>(whole);
    std::tm local{};
    if (::localtime_r(&time, &local) == nullptr) return "0000-00-00 00:00:00.000";
    char text[64];
    std::snprintf(text, sizeof text, "%04d-%02d-%02d %02d:%02d:%02d.%03d", local.tm_year + 1900,
                  local.tm_mon + 1, local.tm_mday, local.tm_hour, local.tm_min, local.tm_sec,
                  millis);
    return text;
}

}  // namespace velmora
