#include <gtest/gtest.h>

#include <nlohmann/json.hpp>

#include "app/cocoa/page_message.hpp"

namespace velmora {
namespace {

TEST(PageMessage, TheMainWindowCarriesTheFourHandlersAndThePopoverOnlyTheme) {
    EXPECT_EQ(messageHandlerNames(WebView::main),
              (std::vector<std::string_view>{"size", "stagec", "theme", "heat"}));
    EXPECT_EQ(messageHandlerNames(WebView::menu), std::vector<std::string_view>{"theme"});
}

TEST(PageMessage, KeepsNameFrameAndAddressAndUnwrapsADictionaryBody) {
    const auto message =
        pageMessageFrom(WebView::menu, "theme", R"([{"token":"T","pref":"dark","on":true}])", true,
                        "file:///Applications/Velmora.app/Contents/Resources/menubar.html");
    EXPECT_EQ(message.view, WebView::menu);
    EXPECT_EQ(message.name, "theme");
    EXPECT_TRUE(message.mainFrame);
    EXPECT_EQ(message.frameURL, "file:///Applications/Velmora.app/Contents/Resources/menubar.html");
    ASSERT_TRUE(message.body.is_object());
    EXPECT_EQ(message.body.at("pref"), "dark");
    // A boolean stays a boolean: the "on" flag of consent and toggle depends on it.
    EXPECT_TRUE(message.body.at("on").is_boolean());
}

TEST(PageMessage, UnwrapsBareStringsAndNumbers) {
    EXPECT_EQ(pageMessageFrom(WebView::main, "size", R"(["expand"])", true, std::nullopt).body,
              "expand");
    EXPECT_EQ(pageMessageFrom(WebView::main, "size", "[1]", true, std::nullopt).body, 1);
}

TEST(PageMessage, AFrameWithoutAddressAndASubframeArePassedOnAsTheyAre) {
    const auto message = pageMessageFrom(WebView::main, "heat", "[null]", false, std::nullopt);
    EXPECT_FALSE(message.mainFrame);
    EXPECT_FALSE(message.frameURL.has_value());
    EXPECT_TRUE(message.body.is_null());
}

TEST(PageMessage, ABodyThatCouldNotBeWrittenOrReadBecomesNull) {
    EXPECT_TRUE(
        pageMessageFrom(WebView::main, "stagec", std::nullopt, true, "file:///p").body.is_null());
    for (const char* broken : {"", "[", "{\"action\":\"cancel\"}", "[1,2]", "[]", "not json"}) {
        EXPECT_TRUE(
            pageMessageFrom(WebView::main, "stagec", broken, true, "file:///p").body.is_null())
            << broken;
    }
}

}  // namespace
}  // namespace velmora
