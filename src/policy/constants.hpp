#pragma once

#include <array>
#include <string_view>

// The fixed tuning of the watchdog. Nothing here is configurable at run time.
namespace velmora::SC {

inline constexpr std::string_view version = "1.1";
inline constexpr std::string_view appName = "Velmora Heat Monitor";

// Lower edges of the ladder, °C.
inline constexpr double warmC = 60;
inline constexpr double hotC = 80;
inline constexpr double extremeC = 95;
inline constexpr double criticalC = 100;

// Durations, seconds.
inline constexpr double hotSustainT1 = 90;
inline constexpr double extremeT2 = 60;
inline constexpr int countdownLen = 10;
inline constexpr double graceLen = 300;
inline constexpr double staleGap = 5;
inline constexpr double simLead = 4;
inline constexpr double failsafe = 30;
inline constexpr double bAlarmInterval = 15;
// After a launch that shows the relief notice no countdown may start for this long, so that a
// stuck sensor cannot turn every boot into a power-off: time to read it and switch off.
inline constexpr double reliefHold = 60;

inline constexpr double simPeakC = 106;
inline constexpr std::array<int, 4> cueSeconds{5, 3, 2, 1};

}  // namespace velmora::SC
