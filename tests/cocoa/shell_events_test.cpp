#include <gtest/gtest.h>

#include <nlohmann/json.hpp>

#include "app/app_harness.hpp"
#include "app/cocoa/page_message.hpp"
#include "app/cocoa/shell_events.hpp"
#include "app/core/bridge_scripts.hpp"

namespace velmora {
namespace {

using testing::AppHarness;

std::string wrapped(const nlohmann::json& body) {
    return nlohmann::json::array({body}).dump();
}

TEST(ShellEvents, AMenuChoiceReachesTheController) {
    AppHarness h;
    h.launch();
    const auto events = eventsFor(*h.app);
    events.menu(MenuAction::appearanceDark);
    EXPECT_EQ(h.app->appearance(), AppearancePref::dark);
    EXPECT_TRUE(h.shell.checked[MenuAction::appearanceDark]);
    events.menu(MenuAction::quit);
    EXPECT_TRUE(h.shell.terminated);
}

TEST(ShellEvents, ClickingTheHeatItemOpensThePopoverAndPushesLiveData) {
    AppHarness h;
    h.launch();
    h.shell.clearRecords();
    eventsFor(*h.app).heatItemClicked();
    EXPECT_TRUE(h.shell.popoverOpen);
    ASSERT_EQ(h.shell.scripts(WebView::menu).size(), 1U);
    EXPECT_EQ(h.shell.scripts(WebView::menu)[0], liveCall(h.app->presentation().liveJSON));
}

TEST(ShellEvents, AConvertedPageMessageWithTheTokenDrivesTheController) {
    AppHarness h;
    h.recordConsent();  // else the consent page comes before the settings
    h.launch();
    ASSERT_EQ(h.app->presentation().mode, UIMode::home);
    const auto body = nlohmann::json{{"action", "settings"}, {"token", h.app->token()}};
    eventsFor(*h.app).message(
        pageMessageFrom(WebView::main, "stagec", wrapped(body), true, "file:///r/index.html"));
    h.loop.runDue();
    EXPECT_EQ(h.app->presentation().mode, UIMode::settings);
}

TEST(ShellEvents, AMessageFromASubframeIsRejected) {
    AppHarness h;
    h.recordConsent();
    h.launch();
    const auto body = nlohmann::json{{"action", "settings"}, {"token", h.app->token()}};
    eventsFor(*h.app).message(
        pageMessageFrom(WebView::main, "stagec", wrapped(body), false, "file:///r/index.html"));
    h.loop.runDue();
    EXPECT_EQ(h.app->presentation().mode, UIMode::home);
    EXPECT_TRUE(h.logged("ui: rejected message from a non-bundled page"));
}

TEST(ShellEvents, APageThatFinishedLoadingInThePopoverGetsTheLiveData) {
    AppHarness h;
    h.launch();
    h.shell.clearRecords();
    eventsFor(*h.app).pageFinished(WebView::menu);
    EXPECT_EQ(h.shell.scripts(WebView::menu),
              std::vector<std::string>{liveCall(h.app->presentation().liveJSON)});
}

}  // namespace
}  // namespace velmora
