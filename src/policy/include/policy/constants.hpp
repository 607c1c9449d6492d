#pragma once

#include <array>
#include <chrono>
#include <string_view>

// The fixed tuning of the watchdog. Nothing here is configurable at run time.
namespace velmora::watchdog {

inline constexpr std::string_view version = "1.1";
inline constexpr std::string_view appName = "Velmora Heat Monitor";

// Lower edges of the ladder, °C.
inline constexpr double warmC = 60;
inline constexpr double hotC = 80;
inline constexpr double extremeC = 95;
inline constexpr double criticalC = 100;

// Durations. Whole seconds: every log line and page that names one shows a whole number.
inline constexpr std::chrono::seconds hotSustain{90};
inline constexpr std::chrono::seconds extremeSustain{60};
// The countdown, its log lines and the stage page's total all read it from here.
inline constexpr std::chrono::seconds countdownLength{10};
inline constexpr std::chrono::seconds graceLength{300};
inline constexpr std::chrono::seconds staleGap{5};
inline constexpr std::chrono::seconds simulationLeadIn{4};
inline constexpr std::chrono::seconds failsafeDelay{30};
inline constexpr std::chrono::seconds emergencyAlarmInterval{15};
// After a launch that shows the relief notice no countdown may start for this long, so that a
// stuck sensor cannot turn every boot into a power-off: time to read it and switch off.
inline constexpr std::chrono::seconds reliefHold{60};

inline constexpr double simulationPeakC = 106;
// Seconds left on the countdown at which a tick sounds, compared with its whole-second count.
inline constexpr std::array<int, 4> cueSeconds{5, 3, 2, 1};

}  // namespace velmora::watchdog
