#pragma once

#include <optional>
#include <string>
#include <string_view>

#include "metrics/system_records.hpp"

namespace velmora {

/// Used memory from /proc/meminfo: MemTotal − MemAvailable (MemFree + Buffers + Cached on
/// kernels without MemAvailable). The pressure is left for `memoryPressureFromPsi`.
std::optional<MemoryInfo> parseMeminfo(std::string_view text);

/// "Critical" when full avg10 ≥ 5, "Warning" when some avg10 ≥ 10, else "Normal"; nothing when
/// the text is not a PSI report.
std::optional<std::string> memoryPressureFromPsi(std::string_view text);

/// The one-minute value of a /proc/loadavg text.
std::optional<double> parseLoadAverage(std::string_view text);

/// How many CPUs a list such as "0-3,5,7-8" names (sysfs' cpu/online).
std::optional<int> countCpuList(std::string_view text);

}  // namespace velmora
