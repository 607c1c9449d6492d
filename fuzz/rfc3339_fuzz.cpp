// Date texts read back from "settings.json" ("consentAt"). The input is tried twice: as a date
// text, and its first eight bytes as an instant to write and read back.

#include <cmath>
#include <cstddef>
#include <cstdint>
#include <string>

#include "fuzz_support.hpp"
#include "store/dates.hpp"

namespace {

using velmora::Timestamp;
using velmora::fuzz::require;

constexpr double kFirstSecond = -62135596800.0;  // 0001-01-01T00:00:00Z
constexpr double kLastSecond = 253402300799.0;   // 9999-12-31T23:59:59Z

void checkParsedText(std::string_view text) {
    const auto parsed = velmora::parseRFC3339(text);
    if (!parsed) return;
    const double secs = parsed->secondsSinceEpoch;
    require(std::isfinite(secs) && secs == std::floor(secs), "a parsed date is a whole second");
    // A zone offset can move the first or last day just outside the writable years.
    require(secs >= kFirstSecond - 86400 && secs <= kLastSecond + 86400,
            "a parsed date lies within the four-digit years");
    if (text.ends_with('Z')) {
        require(velmora::rfc3339(*parsed) == text, "a UTC date text is written back as read");
    }
    if (secs >= kFirstSecond && secs <= kLastSecond) {
        require(velmora::parseRFC3339(velmora::rfc3339(*parsed)) == parsed,
                "a parsed date survives a write and a read");
    }
}

void checkWrittenInstant(double secs) {
    const std::string text = velmora::rfc3339(Timestamp::fromSeconds(secs));
    require(text.size() == 20 && text.back() == 'Z', "a date text has the fixed UTC form");
    const auto parsed = velmora::parseRFC3339(text);
    require(parsed.has_value(), "every written date text reads back");
    double expected = std::isnan(secs) ? kFirstSecond : std::floor(secs);
    expected = expected < kFirstSecond ? kFirstSecond : expected;
    expected = expected > kLastSecond ? kLastSecond : expected;
    require(parsed->secondsSinceEpoch == expected,
            "a written date reads back as its whole second, clamped to the four-digit years");
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    velmora::fuzz::ByteReader input(data, size);
    checkParsedText(velmora::fuzz::asText(data, size));
    checkWrittenInstant(input.takeDouble());
    return 0;
}
