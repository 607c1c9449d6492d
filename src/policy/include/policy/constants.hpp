#pragma once

#include <array>
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

// Durations, seconds.
inline constexpr double hotSustainSeconds = 90;
inline constexpr double extremeSustainSeconds = 60;
// Whole seconds. The countdown, its log lines and the stage page's total all read it from here.
inline constexpr int countdownSeconds = 10;
inline constexpr double graceSeconds = 300;
inline constexpr double staleGapSeconds = 5;
inline constexpr double simulationLeadInSeconds = 4;
inline constexpr double failsafeSeconds = 30;
inline constexpr double emergencyAlarmIntervalSeconds = 15;
// After a launch that shows the relief notice no countdown may start for this long, so that a
// stuck sensor cannot turn every boot into a power-off: time to read it and switch off.
inline constexpr double reliefHoldSeconds = 60;

inline constexpr double simulationPeakC = 106;
inline constexpr std::array<int, 4> cueSeconds{5, 3, 2, 1};

}  // namespace velmora::watchdog
