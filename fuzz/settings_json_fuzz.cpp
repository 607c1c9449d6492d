// "settings.json" as found on disk: any bytes at all, since the user or another program may have
// written it. A decoded value must survive being saved and loaded again unchanged.

#include <cstddef>
#include <cstdint>

#include "fuzz_support.hpp"
#include "store/settings.hpp"

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    using velmora::fuzz::require;
    const auto settings = velmora::decodeSettings(velmora::fuzz::asText(data, size));
    if (!settings) return 0;

    const auto encoded = velmora::encodeSettings(*settings);
    require(encoded.ok(), "a decoded settings value encodes");
    require(encoded->ends_with("}\n"), "the settings file ends with a line break");
    const auto again = velmora::decodeSettings(*encoded);
    require(again.has_value(), "encoded settings decode");
    require(*again == *settings, "settings survive a save and a load unchanged");
    require(*velmora::encodeSettings(*again) == *encoded,
            "encoding the same settings twice gives the same text");
    return 0;
}
