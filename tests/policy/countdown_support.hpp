#pragma once

#include "policy/countdown.hpp"

namespace velmora::testing {

inline MonoTime at(double seconds) {
    return MonoTime::fromSeconds(1'800'000'000.0 + seconds);
}

inline constexpr CountdownInput kCritical{.critical = true, .calm = false, .enabled = true};
inline constexpr CountdownInput kCalm{.critical = false, .calm = true, .enabled = true};
inline constexpr CountdownInput kWarmNotCalm{.critical = false, .calm = false, .enabled = true};
inline constexpr CountdownInput kCriticalDisabled{
    .critical = true, .calm = false, .enabled = false};

inline CountdownEvent ev(CountdownEventKind kind, std::int64_t remaining = 0) {
    return CountdownEvent{kind, remaining};
}

}  // namespace velmora::testing
