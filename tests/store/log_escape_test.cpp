#include "store/log_escape.hpp"

#include <gtest/gtest.h>

namespace velmora {
namespace {

TEST(EscapeForLog, OrdinaryTextIsUnchanged) {
    EXPECT_EQ(escapeForLog("stage-c: marker written /home/ada/x (peak ladder 108)"),
              "stage-c: marker written /home/ada/x (peak ladder 108)");
    EXPECT_EQ(escapeForLog("Températures · 108 °C — ok \\ back"),
              "Températures · 108 °C — ok \\ back");
    EXPECT_EQ(escapeForLog(""), "");
}

TEST(EscapeForLog, LineBreaksAndTabsGetTheirShortNames) {
    EXPECT_EQ(escapeForLog("a\nb\rc\td"), "a\\nb\\rc\\td");
}

TEST(EscapeForLog, OtherControlCharactersAndDeleteBecomeHexBytes) {
    EXPECT_EQ(escapeForLog(std::string("\0\x1b[2J\x7f", 6)), "\\x00\\x1b[2J\\x7f");
}

TEST(EscapeForLog, UnicodeLineBreakersAreEscaped) {
    EXPECT_EQ(escapeForLog("a\xc2\x85"
                           "b\xe2\x80\xa8"
                           "c\xe2\x80\xa9"),
              "a\\u0085b\\u2028c\\u2029");
}

TEST(EscapeForLog, BytesThatAreNotUtf8BecomeHexBytes) {
    EXPECT_EQ(escapeForLog("a\xff"
                           "b\xc3"),
              "a\\xffb\\xc3");
    EXPECT_EQ(escapeForLog("\xc0\xaf"), "\\xc0\\xaf");           // overlong
    EXPECT_EQ(escapeForLog("\xed\xa0\x80"), "\\xed\\xa0\\x80");  // a surrogate
}

TEST(EscapeForLog, EscapingTwiceChangesNothingMore) {
    const std::string once = escapeForLog("x\n\xff\xc2\x9b");
    EXPECT_EQ(escapeForLog(once), once);
}

}  // namespace
}  // namespace velmora
