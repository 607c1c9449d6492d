// /proc/loadavg. The one-minute load is a finite, non-negative number or nothing: the dashboard
// divides and prints it.

#include <cmath>
#include <cstddef>
#include <cstdint>

#include "fuzz_support.hpp"
#include "metrics/linux/meminfo.hpp"

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    using velmora::fuzz::require;
    const auto load = velmora::parseLoadAverage(velmora::fuzz::asText(data, size));
    if (!load) return 0;
    require(std::isfinite(*load), "a load average is a finite number");
    require(*load >= 0.0, "a load average is never negative");
    return 0;
}
