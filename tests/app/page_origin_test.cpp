#include "app/core/page_origin.hpp"

#include <gtest/gtest.h>

namespace velmora {
namespace {

TEST(PageOrigin, MainFrameFilePageIsBundled) {
    EXPECT_TRUE(fromBundledPage(true, std::string("file:///opt/velmora/resources/index.html")));
    EXPECT_TRUE(fromBundledPage(true, std::string("FILE:///x/stagec.html")));
}

TEST(PageOrigin, SubframeIsRejected) {
    EXPECT_FALSE(fromBundledPage(false, std::string("file:///x/index.html")));
}

TEST(PageOrigin, NonFilePageIsRejected) {
    EXPECT_FALSE(fromBundledPage(true, std::string("https://example.invalid/index.html")));
    EXPECT_FALSE(fromBundledPage(true, std::string("filex:///x")));
    EXPECT_FALSE(fromBundledPage(true, std::string("/x/index.html")));
    EXPECT_FALSE(fromBundledPage(true, std::nullopt));
}

TEST(PageOrigin, UrlParsing) {
    EXPECT_TRUE(
        parsesAsURL("x-apple.systempreferences:com.apple.preference.security?Privacy_Automation"));
    EXPECT_TRUE(parsesAsURL("file:///usr/share/doc/x.rules"));
    EXPECT_FALSE(parsesAsURL(""));
    EXPECT_FALSE(parsesAsURL("no scheme here"));
    EXPECT_FALSE(parsesAsURL("1abc:rest"));
    EXPECT_FALSE(parsesAsURL("file:"));
}

}  // namespace
}  // namespace velmora
