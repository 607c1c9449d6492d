// /proc/pressure/memory (PSI). The answer is nothing or one of the three pressure words.

#include <cstddef>
#include <cstdint>

#include "fuzz_support.hpp"
#include "metrics/linux/meminfo.hpp"

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    using velmora::fuzz::require;
    const std::string_view text = velmora::fuzz::asText(data, size);
    const auto pressure = velmora::memoryPressureFromPsi(text);
    if (!pressure) return 0;
    require(*pressure == "Normal" || *pressure == "Warning" || *pressure == "Critical",
            "pressure is Normal, Warning or Critical");
    require(text.find("avg10=") != std::string_view::npos, "a pressure needs an avg10 figure");
    return 0;
}
