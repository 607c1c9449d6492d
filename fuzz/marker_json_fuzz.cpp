// "auto-shutdown.marker" as found at launch: any bytes. A marker that decodes is shown on the
// relief screen and may be written again, so it must be a marker the program itself could have
// written: a finite peak, and the same marker after another encode and decode.

#include <cmath>
#include <cstddef>
#include <cstdint>

#include "fuzz_support.hpp"
#include "store/marker.hpp"

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    using velmora::fuzz::require;
    const auto marker = velmora::decodeMarker(velmora::fuzz::asText(data, size));
    if (!marker) return 0;

    require(std::isfinite(marker->peakC), "a decoded peak temperature is a finite number");
    const auto encoded = velmora::encodeMarker(*marker);
    require(encoded.ok(), "a decoded marker encodes");
    const auto again = velmora::decodeMarker(*encoded);
    require(again.has_value(), "an encoded marker decodes");
    require(*again == *marker, "a marker survives a write and a read unchanged");
    return 0;
}
