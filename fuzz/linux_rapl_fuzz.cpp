// Two readings of a RAPL package energy counter (energy_uj) and its wrap point
// (max_energy_range_uj), as printed by the kernel, NUL-separated, then the time between the
// samples in milliseconds (2 bytes, plus one). Watts are finite and non-negative, or nothing.

#include <cmath>
#include <cstddef>
#include <cstdint>

#include "fuzz_support.hpp"
#include "metrics/linux/rapl.hpp"

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    using velmora::fuzz::require;
    velmora::fuzz::ByteReader input(data, size);
    const auto previous = velmora::parseInteger(input.takeUntil('\0'));
    const auto current = velmora::parseInteger(input.takeUntil('\0'));
    const auto range = velmora::parseInteger(input.takeUntil('\0'));
    const double seconds = (input.take<std::uint16_t>() + 1) / 1000.0;
    if (!previous || !current) return 0;

    const auto watts = velmora::wattsBetween(*previous, *current, range, velmora::Seconds(seconds));
    if (!watts) return 0;
    require(std::isfinite(*watts) && *watts >= 0.0, "power is a finite, non-negative number");
    return 0;
}
