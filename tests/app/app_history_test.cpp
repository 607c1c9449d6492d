#include <gtest/gtest.h>

#include <nlohmann/json.hpp>

#include "app/app_harness.hpp"

namespace velmora::testing {
namespace {

constexpr std::string_view kHistoryCall = "window.heatHistory && window.heatHistory.render(";

std::vector<std::string> historyCalls(const AppHarness& h) {
    std::vector<std::string> found;
    for (const auto& script : h.shell.scripts(WebView::main)) {
        if (script.starts_with(kHistoryCall)) found.push_back(script);
    }
    return found;
}

nlohmann::json viewOf(const std::string& call) {
    const auto json = call.substr(kHistoryCall.size(), call.size() - kHistoryCall.size() - 1);
    return nlohmann::json::parse(json);
}

nlohmann::json historyRequest(const AppHarness& h, const std::string& range) {
    auto body = h.withToken("history");
    body["range"] = range;
    return body;
}

TEST(PageHistory, ARangeAskedWithTheTokenIsAnsweredWithThePointsKept) {
    AppHarness h;
    h.readings->repeat.cpuBusy = 42.0;
    h.launch();
    h.awaitHistory();
    h.loop.advance(Seconds(6));
    h.send("heat", historyRequest(h, "2h"));
    const auto calls = historyCalls(h);
    ASSERT_EQ(calls.size(), 1U);
    const auto view = viewOf(calls.front());
    EXPECT_EQ(view["range"], "2h");
    EXPECT_EQ(view["bands"]["critical"], 100.0);
    ASSERT_GE(view["rows"].size(), 5U);
    EXPECT_EQ(view["rows"].back()[6], 42.0) << "the CPU load of the samples";
}

TEST(PageHistory, ARequestWithoutTheTokenIsRejectedAndAnswersNothing) {
    AppHarness h;
    h.launch();
    h.awaitHistory();
    auto body = historyRequest(h, "15m");
    body["token"] = "forged";
    h.send("heat", body);
    EXPECT_TRUE(historyCalls(h).empty());
    EXPECT_TRUE(h.logged("ui: rejected heat action 'history': missing/wrong token"));
}

TEST(PageHistory, AnUnknownRangeIsLoggedAndAnswersNothing) {
    AppHarness h;
    h.launch();
    h.awaitHistory();
    h.send("heat", historyRequest(h, "1y"));
    h.send("heat", h.withToken("history"));
    EXPECT_TRUE(historyCalls(h).empty());
    EXPECT_TRUE(h.logged("ui: unknown history range '1y'"));
    EXPECT_TRUE(h.logged("ui: unknown history range ''"));
}

TEST(PageHistory, ThePopupIsGivenTheLastFifteenMinutesBeforeTheReadings) {
    AppHarness h;
    h.readings->repeat.cpuBusy = 10.0;
    h.launch();
    h.awaitHistory();
    h.loop.advance(Seconds(30));
    h.app->toggleMenuPopover();
    const auto scripts = h.shell.scripts(WebView::menu);
    ASSERT_FALSE(scripts.empty());
    const auto& last = scripts.back();
    EXPECT_EQ(
        last.rfind("window.heatLive && window.heatLive.recent && window.heatLive.recent([", 0), 0U)
        << last;
    EXPECT_NE(last.find(";window.heatLive && window.heatLive.render("), std::string::npos);
    EXPECT_NE(last.find("10.0"), std::string::npos);
}

}  // namespace
}  // namespace velmora::testing
