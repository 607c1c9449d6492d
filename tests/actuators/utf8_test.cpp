#include "actuators/utf8.hpp"

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

}  // namespace
}  // namespace velmora
