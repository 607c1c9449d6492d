// /proc/meminfo as the kernel (or a fixture tree) prints it. Memory in use is a share of a
// positive total, in finite figures, and the pressure is left for the PSI reader.

#include <cmath>
#include <cstddef>
#include <cstdint>

#include "fuzz_support.hpp"
#include "metrics/linux/meminfo.hpp"

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    using velmora::fuzz::require;
    const auto memory = velmora::parseMeminfo(velmora::fuzz::asText(data, size));
    if (!memory) return 0;
    require(std::isfinite(memory->usedPercent) && std::isfinite(memory->usedGB) &&
                std::isfinite(memory->totalGB),
            "memory figures are finite");
    require(memory->usedPercent >= 0.0 && memory->usedPercent <= 100.0,
            "memory in use is a percentage");
    require(memory->totalGB > 0.0, "a machine has some memory");
    require(memory->usedGB >= 0.0 && memory->usedGB <= memory->totalGB,
            "memory in use is part of the total");
    require(!memory->pressure, "meminfo says nothing about pressure");
    return 0;
}
