#include "store/marker.hpp"

#include <gtest/gtest.h>

#include <cmath>
#include <limits>

namespace velmora {
namespace {

TEST(MarkerJson, IsCompactInFieldOrder) {
    const auto json = encodeMarker(Marker{"2026-11-14T23:47:13Z", 106.5, "critical thermal state"});
    ASSERT_TRUE(json.ok());
    EXPECT_EQ(*json,
              R"({"at":"2026-11-14T23:47:13Z","peakC":106.5,"reason":"critical thermal state"})");
}

TEST(MarkerJson, RoundTrips) {
    const Marker marker{"2026-11-14T23:47:13Z", 108, "emergency"};
    const auto json = encodeMarker(marker);
    ASSERT_TRUE(json.ok());
    EXPECT_EQ(decodeMarker(*json), marker);
}

TEST(MarkerJson, NonFinitePeakCannotBeEncoded) {
    for (const double peak : {std::nan(""), std::numeric_limits<double>::infinity()}) {
        const auto json = encodeMarker(Marker{"x", peak, "y"});
        ASSERT_FALSE(json.ok());
        EXPECT_EQ(json.error().code, 0);
        EXPECT_NE(json.error().message.find("could not encode the marker"), std::string::npos);
    }
}

TEST(MarkerJson, AllThreeKeysAreRequiredWithTheirTypes) {
    for (const char* text :
         {R"({"peakC":1,"reason":"r"})", R"({"at":"a","reason":"r"})", R"({"at":"a","peakC":1})",
          R"({"at":1,"peakC":1,"reason":"r"})", R"({"at":"a","peakC":"1","reason":"r"})",
          R"({"at":"a","peakC":true,"reason":"r"})", R"({"at":"a","peakC":1,"reason":null})", "",
          "[1]", "garbage"}) {
        EXPECT_FALSE(decodeMarker(text).has_value()) << text;
    }
}

TEST(MarkerJson, IntegerPeakDecodesAsDegrees) {
    EXPECT_EQ(decodeMarker(R"({"at":"a","peakC":108,"reason":"r"})"), (Marker{"a", 108.0, "r"}));
}

TEST(Marker, UnreadablePlaceholderHasEmptyTimeAndZeroPeak) {
    EXPECT_EQ(unreadableMarker(), (Marker{"", 0, "unreadable marker"}));
}

TEST(Relief, EqualityComparesPeakAndCancelled) {
    EXPECT_EQ((Relief{106, true}), (Relief{106, true}));
    EXPECT_NE((Relief{106, true}), (Relief{106, false}));
    EXPECT_NE((Relief{106, true}), (Relief{107, true}));
}

}  // namespace
}  // namespace velmora
