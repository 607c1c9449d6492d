#pragma once

#include "policy/countdown.hpp"

namespace velmora::testing {

inline MonoTime at(double seconds) {
    return MonoTime::fromSeconds(1'800'000'000.0 + seconds);
}

inline constexpr CInput kCritical{.critical = true, .calm = false, .enabled = true};
inline constexpr CInput kCalm{.critical = false, .calm = true, .enabled = true};
inline constexpr CInput kWarmNotCalm{.critical = false, .calm = false, .enabled = true};
inline constexpr CInput kCriticalDisabled{.critical = true, .calm = false, .enabled = false};

inline CEvent ev(CEventKind kind, std::int64_t remaining = 0) {
    return CEvent{kind, remaining};
}

}  // namespace velmora::testing
