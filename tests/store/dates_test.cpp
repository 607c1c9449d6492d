#include "store/dates.hpp"

#include <gtest/gtest.h>

#include <cmath>
#include <limits>

namespace velmora {
namespace {

constexpr double nov14 = 1794700033.0;  // 2026-11-14T23:47:13Z

TEST(Rfc3339, FractionalSecondsAreDroppedAndTheTextEndsInZ) {
    const std::string text = rfc3339(Timestamp::fromSeconds(nov14 + 0.987));
    EXPECT_EQ(text, "2026-11-14T23:47:13Z");
    EXPECT_EQ(text.back(), 'Z');
}

TEST(Rfc3339, FormatsTheEpoch) {
    EXPECT_EQ(rfc3339(Timestamp::fromSeconds(0)), "1970-01-01T00:00:00Z");
}

TEST(Rfc3339, FractionsBeforeTheEpochRoundTowardThePast) {
    EXPECT_EQ(rfc3339(Timestamp::fromSeconds(-0.5)), "1969-12-31T23:59:59Z");
}

TEST(Rfc3339, DistantPastAndNonFiniteInstantsStayWithinFourDigitYears) {
    EXPECT_EQ(rfc3339(Timestamp::distantPast()), "0001-01-01T00:00:00Z");
    EXPECT_EQ(rfc3339(Timestamp::fromSeconds(std::nan(""))), "0001-01-01T00:00:00Z");
    EXPECT_EQ(rfc3339(Timestamp::fromSeconds(std::numeric_limits<double>::infinity())),
              "9999-12-31T23:59:59Z");
}

TEST(ParseRfc3339, ReadsWhatRfc3339Writes) {
    const auto parsed = parseRFC3339(rfc3339(Timestamp::fromSeconds(nov14 + 0.4)));
    ASSERT_TRUE(parsed.has_value());
    EXPECT_EQ(parsed->secondsSinceEpoch, nov14);
}

TEST(ParseRfc3339, AppliesAZoneOffset) {
    const auto east = parseRFC3339("2026-11-15T01:17:13+01:30");
    const auto west = parseRFC3339("2026-11-14T18:47:13-05:00");
    ASSERT_TRUE(east.has_value());
    ASSERT_TRUE(west.has_value());
    EXPECT_EQ(east->secondsSinceEpoch, nov14);
    EXPECT_EQ(west->secondsSinceEpoch, nov14);
}

TEST(ParseRfc3339, AcceptsLeapDayOnlyInLeapYears) {
    const auto leap = parseRFC3339("2024-02-29T12:00:00Z");
    ASSERT_TRUE(leap.has_value());
    EXPECT_EQ(leap->secondsSinceEpoch, 1709208000.0);
    EXPECT_FALSE(parseRFC3339("2023-02-29T12:00:00Z").has_value());
}

TEST(ParseRfc3339, RejectsTextOutsideTheInternetDateTimeForm) {
    for (const char* text :
         {"", "2026-11-14", "2026-11-14T23:47:13", "2026-11-14T23:47:13.5Z", "2026-11-14 23:47:13Z",
          "2026-11-14t23:47:13Z", "2026/11/14T23:47:13Z", "2026-11-14T23:47:13+0100",
          "2026-11-14T23:47:13Zjunk", "2026-13-01T00:00:00Z", "2026-00-10T00:00:00Z",
          "2026-04-31T00:00:00Z", "2026-11-14T24:00:00Z", "2026-11-14T23:60:00Z",
          "2026-11-14T23:47:60Z", "0000-01-01T00:00:00Z", "2026-11-14T23:47:13+24:00",
          "2026-11-14T23:47:13+01:60", "2O26-11-14T23:47:13Z"}) {
        EXPECT_FALSE(parseRFC3339(text).has_value()) << text;
    }
}

}  // namespace
}  // namespace velmora
