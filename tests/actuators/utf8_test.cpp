#include "os/utf8.hpp"

#include <gtest/gtest.h>

#include <string>

namespace velmora {
namespace {

TEST(Utf8, AcceptsAsciiAndMultiByteText) {
    EXPECT_TRUE(isValidUtf8(""));
    EXPECT_TRUE(isValidUtf8("plain"));
    EXPECT_TRUE(isValidUtf8("108 °C — €, 𝄞"));
}

TEST(Utf8, RejectsStrayAndTruncatedBytes) {
    EXPECT_FALSE(isValidUtf8("\xFF\xFE broken"));
    EXPECT_FALSE(isValidUtf8("\x80"));
    EXPECT_FALSE(isValidUtf8("ends in \xE2\x82"));
}

TEST(Utf8, RejectsOverlongFormsSurrogatesAndValuesPastTheLastCodePoint) {
    EXPECT_FALSE(isValidUtf8("\xC0\xAF"));
    EXPECT_FALSE(isValidUtf8("\xE0\x80\xAF"));
    EXPECT_FALSE(isValidUtf8("\xED\xA0\x80"));
    EXPECT_FALSE(isValidUtf8("\xF4\x90\x80\x80"));
}

TEST(Utf8, UndecodableBytesBecomeAnEmptyText) {
    EXPECT_EQ(utf8OrEmpty("caf\xC3\xA9"), "caf\xC3\xA9");
    EXPECT_EQ(utf8OrEmpty("caf\xE9"), "");
}

TEST(Utf8, SequenceAtTheFrontGivesItsLengthAndCodePoint) {
    const auto euro = utf8SequenceAt("\xE2\x82\xAC and more");
    ASSERT_TRUE(euro.has_value());
    EXPECT_EQ(euro->length, 3U);
    EXPECT_EQ(euro->codePoint, 0x20ACU);
    const auto clef = utf8SequenceAt("\xF0\x9D\x84\x9E");
    ASSERT_TRUE(clef.has_value());
    EXPECT_EQ(clef->length, 4U);
    EXPECT_EQ(clef->codePoint, 0x1D11EU);
    EXPECT_EQ(utf8SequenceAt("A")->codePoint, 0x41U);
}

TEST(Utf8, NoSequenceAtAnEmptyOrBrokenFront) {
    EXPECT_FALSE(utf8SequenceAt("").has_value());
    EXPECT_FALSE(utf8SequenceAt("\x80 stray continuation").has_value());
    EXPECT_FALSE(utf8SequenceAt("\xE2\x82").has_value());      // cut short
    EXPECT_FALSE(utf8SequenceAt("\xC0\xAF").has_value());      // overlong
    EXPECT_FALSE(utf8SequenceAt("\xED\xA0\x80").has_value());  // surrogate
}

}  // namespace
}  // namespace velmora
