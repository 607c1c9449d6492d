// A temperature key's value as the SMC returns it: a four-character type and up to 32 bytes.
// The input is the type (4 bytes) followed by the value bytes.

#include <cmath>
#include <cstddef>
#include <cstdint>
#include <cstring>
#include <vector>

#include "fuzz_support.hpp"
#include "metrics/macos/smc.hpp"

namespace {

using velmora::fuzz::require;

void checkValue(std::string_view type, const std::vector<std::uint8_t>& bytes, double value) {
    if (type == "sp78") {
        require(value >= -128.0 && value < 128.0 && std::floor(value * 256) == value * 256,
                "sp78 is a signed 8.8 fixed-point number");
    } else if (type == "fpe2") {
        require(value >= 0.0 && value <= 16383.75 && std::floor(value * 4) == value * 4,
                "fpe2 is an unsigned 14.2 fixed-point number");
    } else {
        float expected = 0;
        std::memcpy(&expected, bytes.data(), sizeof expected);
        require(std::isnan(expected) ? std::isnan(value) : value == static_cast<double>(expected),
                "flt is the host-order single widened unchanged");
    }
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    velmora::fuzz::ByteReader input(data, size);
    const std::string_view type = input.takeBytes(4);
    const std::string_view rest = input.takeBytes(32);
    const std::vector<std::uint8_t> bytes(rest.begin(), rest.end());

    const auto celsius = velmora::decodeSMCTemperature(type, bytes);
    const bool decodable = ((type == "sp78" || type == "fpe2") && bytes.size() >= 2) ||
                           (type == "flt " && bytes.size() >= 4);
    require(celsius.has_value() == decodable,
            "exactly the three temperature types with enough bytes decode");
    if (celsius) checkValue(type, bytes, *celsius);
    return 0;
}
