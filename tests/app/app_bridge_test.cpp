#include <gtest/gtest.h>

#include <algorithm>
#include <chrono>
#include <string>
#include <vector>

#include "app/app_harness.hpp"
#include "app/core/bridge_scripts.hpp"
#include "store/settings_store.hpp"

namespace velmora::testing {
namespace {

using namespace std::chrono_literals;

using nlohmann::json;

int countLiveCalls(const std::vector<std::string>& scripts) {
    return static_cast<int>(std::count_if(scripts.begin(), scripts.end(), [](const auto& script) {
        return script.starts_with("window.heatLive");
    }));
}

TEST(PageBridge, MessageFromASubframeIsRejectedWhateverItsName) {
    AppHarness h;
    h.recordConsent();
    h.launch();
    for (const std::string name : {"stagec", "size", "anything"}) {
        h.app->receive(PageMessage{WebView::main, name, h.withToken("settings"), false,
                                   "file:///opt/velmora/resources/index.html"});
    }
    h.loop.runDue();
    EXPECT_EQ(h.countLines("ui: rejected message from a non-bundled page"), 3);
    EXPECT_FALSE(h.app->presentation().wantSettings);
}

TEST(PageBridge, MessageFromANonFilePageIsRejected) {
    AppHarness h;
    h.recordConsent();
    h.launch();
    h.app->receive(PageMessage{WebView::main, "stagec", h.withToken("settings"), true,
                               "https://example.invalid/stagec.html"});
    h.app->receive(PageMessage{WebView::menu, "theme", json{}, true, std::nullopt});
    h.loop.runDue();
    EXPECT_EQ(h.countLines("ui: rejected message from a non-bundled page"), 2);
    EXPECT_FALSE(h.app->presentation().wantSettings);
}

TEST(PageBridge, MessagesActOnlyOnceTheLoopRuns) {
    AppHarness h;
    h.recordConsent();
    h.launch();
    h.app->receive(PageMessage{WebView::main, "stagec", h.withToken("settings"), true,
                               "file:///opt/velmora/resources/index.html"});
    EXPECT_FALSE(h.app->presentation().wantSettings);
    h.loop.runDue();
    EXPECT_TRUE(h.app->presentation().wantSettings);
    EXPECT_EQ(h.app->presentation().mode, UIMode::settings);
}

TEST(PageBridge, EmergencyPageMessageWithoutTokenIsRejectedAndTheEngineIsNotCalled) {
    AppHarness h;
    h.launch();
    const auto rendersBefore = h.renders().size();
    h.send("stagec", json{{"action", "consent"}, {"on", true}});
    EXPECT_TRUE(h.logged("ui: rejected stagec action 'consent': missing/wrong token"));
    EXPECT_FALSE(h.app->engine()->settingsInForce().consentRecorded);
    EXPECT_EQ(h.renders().size(), rendersBefore);  // no tick either
}

TEST(PageBridge, EmergencyPageMessageWithTheTokenInAnotherLetterCaseIsRejected) {
    AppHarness h;
    h.launch();
    std::string lower = h.app->token();
    for (auto& c : lower)
        c = static_cast<char>(std::tolower(static_cast<unsigned char>(c)));
    h.send("stagec", json{{"action", "consent"}, {"on", true}, {"token", lower}});
    EXPECT_TRUE(h.logged("ui: rejected stagec action 'consent': missing/wrong token"));
    EXPECT_FALSE(h.app->engine()->settingsInForce().consentRecorded);
}

TEST(PageBridge, EmergencyPageMessageBodiesThatAreNotDictionariesOrLackAnActionAreIgnoredSilently) {
    AppHarness h;
    h.launch();
    const auto lines = h.logLines().size();
    h.send("stagec", json("cancel"));
    h.send("stagec", json{{"token", h.app->token()}});
    h.send("stagec", json{{"action", 3}, {"token", h.app->token()}});
    h.send("nonsense", h.withToken("cancel"));
    EXPECT_EQ(h.logLines().size(), lines);
}

TEST(PageBridge, HeatBareStringShutdownIsRejected) {
    AppHarness h;
    h.recordConsent();
    h.launch();
    h.send("heat", json("shutdown"));
    EXPECT_TRUE(h.logged("ui: rejected heat action 'shutdown': missing/wrong token"));
    EXPECT_EQ(h.realShutdowner->shutdownCalls, 0);
}

TEST(PageBridge, UnknownEmergencyPageActionIsLoggedAndThePageStillRendered) {
    AppHarness h;
    h.launch();  // consent page: every tick renders
    const auto rendersBefore = h.renders().size();
    h.send("stagec", h.withToken("dance"));
    EXPECT_TRUE(h.logged("ui: unknown stagec action 'dance'"));
    EXPECT_EQ(h.renders().size(), rendersBefore + 1);
}

TEST(PageBridge, ToggleWithoutOnTurnsAutoShutdownOff) {
    AppHarness h;
    h.launch();
    h.send("stagec", h.withToken("toggle"));
    const auto saved = SettingsStore(h.dir).load();
    EXPECT_FALSE(saved.autoShutdown);
    EXPECT_TRUE(saved.consentRecorded);
}

TEST(PageBridge, ToggleWithOnAsTheStringTrueTurnsAutoShutdownOff) {
    AppHarness h;
    h.recordConsent(true);
    h.launch();
    auto body = h.withToken("toggle");
    body["on"] = "true";
    h.send("stagec", body);
    EXPECT_FALSE(SettingsStore(h.dir).load().autoShutdown);
}

TEST(PageBridge, ConsentWithOnRecordsItAndProbes) {
    AppHarness h;
    h.launch();
    auto body = h.withToken("consent");
    body["on"] = true;
    h.send("stagec", body);
    EXPECT_TRUE(SettingsStore(h.dir).load().enabled());
    EXPECT_EQ(h.realShutdowner->probeCalls, 1);
    EXPECT_EQ(h.app->presentation().mode, UIMode::home);
    EXPECT_TRUE(h.logged("ui: mode consent -> home"));
}

TEST(PageBridge, ThemeWithAnUnknownPrefIsRejected) {
    AppHarness h;
    h.launch();
    h.send("theme", json{{"token", h.app->token()}, {"pref", "sepia"}});
    h.send("theme", json{{"token", h.app->token()}, {"pref", "Dark"}});
    h.send("theme", json{{"pref", "dark"}});
    h.send("theme", json("dark"));
    EXPECT_EQ(h.countLines("ui: rejected theme message"), 4);
    EXPECT_EQ(h.app->appearance(), AppearancePref::autoTheme);
}

TEST(PageBridge, SizeExpandOnAStagePageResizesWithoutLoadingExpanded) {
    AppHarness h;
    h.launch();  // consent page
    h.shell.clearRecords();
    h.send("size", json("expand"));
    EXPECT_TRUE(h.shell.pagesLoaded(WebView::main).empty());
    ASSERT_EQ(h.shell.frameChanges.size(), 1U);
    EXPECT_EQ(h.shell.frameChanges[0].frame.width, 380);
    EXPECT_EQ(h.shell.frameChanges[0].frame.height, 500 + h.shell.titleBarHeight);
    EXPECT_TRUE(h.shell.frameChanges[0].animate);
    EXPECT_TRUE(h.app->presentation().isExpanded);
}

TEST(PageBridge, SizeExpandOnTheHomePageLoadsExpanded) {
    AppHarness h;
    h.recordConsent();
    h.launch();
    h.shell.clearRecords();
    h.send("size", json("expand"));
    EXPECT_EQ(h.shell.pagesLoaded(WebView::main), std::vector<std::string>{"expanded"});
    h.send("size", json("collapse"));
    EXPECT_EQ(h.shell.pagesLoaded(WebView::main), (std::vector<std::string>{"expanded", "index"}));
    EXPECT_FALSE(h.app->presentation().isExpanded);
    h.send("size", json(true));  // not a string: ignored
    EXPECT_EQ(h.shell.frameChanges.size(), 2U);
}

TEST(PageBridge, StageScriptFollowsEveryPageLoad) {
    AppHarness h;
    h.recordConsent();
    h.launch();
    h.shell.clearRecords();
    h.send("size", json("expand"));
    EXPECT_TRUE(h.shell.scripts(WebView::main).empty());
    h.loop.advance(150ms);
    const auto scripts = h.shell.scripts(WebView::main);
    ASSERT_FALSE(scripts.empty());
    EXPECT_EQ(scripts.front(), stageScript("none", "none"));
}

TEST(PageBridge, MissingPageFileLoadsNothingAndKeepsThePageName) {
    AppHarness h;
    h.recordConsent();
    h.shell.shippedPages.erase("expanded");
    h.launch();
    h.send("size", json("expand"));
    EXPECT_EQ(h.app->presentation().pageName, "index");
    EXPECT_EQ(h.shell.pagesLoaded(WebView::main), std::vector<std::string>{"index"});
}

TEST(PageBridge, PagesGetReadAccessToTheirOwnFolder) {
    AppHarness h;
    h.launch();
    ASSERT_FALSE(h.shell.loads.empty());
    EXPECT_EQ(h.shell.loads.back().readAccess, h.shell.resources);
}

TEST(PageBridge, ShutdownButtonDuringASimulationNeverCallsTheShutdowner) {
    AppHarness h;
    h.recordConsent();
    h.launch();
    h.send("stagec", h.withToken("test"));
    ASSERT_TRUE(h.app->engine()->simActive());
    h.send("heat", h.withToken("shutdown"));
    EXPECT_EQ(h.realShutdowner->shutdownCalls, 0);
    EXPECT_TRUE(
        h.logged("ui: 'Shut Down to Cool Off' pressed during a simulation/demo: stubbed, "
                 "nothing shut down"));
}

TEST(PageBridge, ShutdownButtonCallsTheShutdowner) {
    AppHarness h;
    h.recordConsent();
    h.launch();
    h.send("heat", h.withToken("shutdown"));
    EXPECT_EQ(h.realShutdowner->shutdownCalls, 1);
    EXPECT_TRUE(h.logged("ui: 'Shut Down to Cool Off' pressed (user-initiated)"));
}

TEST(PageBridge, FailedUserShutdownShowsTheManualNotice) {
    AppHarness h;
    // Critical without auto-shutdown: the notice stays while the machine is still critical.
    h.recordConsent(false);
    h.realShutdowner->shutdownAnswer = ShutdownError::failed("logind went away");
    h.launch({"--force-thermal", "critical"});
    h.send("heat", h.withToken("shutdown"));
    EXPECT_TRUE(h.logged("ui: user shutdown failed: logind went away"));
    EXPECT_TRUE(h.logged("stage-c: ERROR user-initiated shutdown failed: logind went away"));
    EXPECT_EQ(h.app->presentation().mode, UIMode::manual);
    EXPECT_EQ(h.shell.title, "SHUT DOWN MANUALLY");
}

TEST(PageBridge, OpenAutomationLogsAndOpensThePlatformAddress) {
    AppHarness h;
    h.launch();
    h.send("stagec", h.withToken("openAutomation"));
    EXPECT_TRUE(h.logged(std::string(texts().openingPermissionSettingsLog)));
    EXPECT_EQ(h.shell.openedURLs, std::vector<std::string>{std::string(texts().automationPaneURL)});
}

TEST(PageBridge, TipsShowTheCoolDownSheet) {
    AppHarness h;
    h.launch();
    h.send("heat", h.withToken("tips"));
    ASSERT_EQ(h.shell.sheets.size(), 1U);
    EXPECT_EQ(h.shell.sheets[0].message, "Cool down tips");
    EXPECT_EQ(h.shell.sheets[0].button, "OK");
    EXPECT_EQ(h.shell.sheets[0].informative,
              "\u2022 Quit heavy apps (builds, VMs, browsers with many tabs)\n\u2022 " +
                  std::string(texts().tipUnplugPower) + "\n\u2022 " +
                  std::string(texts().tipClearVents) +
                  "\n\u2022 Pause compiling, video encode, or 3D work until thermal drops\n"
                  "\u2022 If it keeps climbing, shut down to cool off");
}

TEST(PageBridge, SettingsAndBackFromTheStagePage) {
    AppHarness h;
    h.recordConsent();
    h.launch();
    h.send("heat", h.withToken("settings"));
    EXPECT_EQ(h.app->presentation().mode, UIMode::settings);
    h.send("stagec", h.withToken("back"));
    EXPECT_EQ(h.app->presentation().mode, UIMode::home);
}

TEST(PageBridge, RecheckProbesAsTheUser) {
    AppHarness h;
    h.recordConsent();
    h.launch();
    h.send("stagec", h.withToken("recheck"));
    EXPECT_TRUE(h.logged("stage-c: automation permission probe (user pressed Check again)"));
}

TEST(PageBridge, StageEnteredExtremeChimesOnlyWhenNotAnnouncedYet) {
    AppHarness h;
    h.recordConsent();
    h.launch({"--mute"});
    h.send("heat", h.withToken("stageEnteredExtreme"));
    EXPECT_EQ(h.countLines("sound: soft chime (muted)"), 1);
    // The window announces the stage itself (with a chime of its own) when the heat reaches it.
    h.readings->repeat.thermal = ThermalState::serious;
    h.loop.advance(1s);
    ASSERT_EQ(h.app->presentation().lastAnnounced, AlertStage::extreme);
    const int chimes = h.countLines("sound: soft chime (muted)");
    h.send("heat", h.withToken("stageEnteredExtreme"));
    EXPECT_EQ(h.countLines("sound: soft chime (muted)"), chimes);
}

TEST(PageBridge, RenderCarriesTheViewAndTheMode) {
    AppHarness h;
    h.launch();
    h.loop.advance(250ms);
    const auto renders = h.renders();
    ASSERT_FALSE(renders.empty());
    EXPECT_TRUE(renders.back().ends_with(", 'consent')"));
    EXPECT_NE(renders.back().find("\"consentNeeded\":true"), std::string::npos);
}

TEST(PageBridge, LiveDataGoesToBothHomePages) {
    AppHarness h;
    h.recordConsent();
    h.launch();
    h.app->pageFinished(WebView::main);
    EXPECT_EQ(h.shell.scripts(WebView::main).back(), liveCall(h.app->presentation().liveJSON));
    h.send("size", json("expand"));
    ASSERT_EQ(h.app->presentation().pageName, "expanded");
    h.shell.clearRecords();
    h.loop.advance(1s);
    EXPECT_EQ(countLiveCalls(h.shell.scripts(WebView::main)), 1);
    EXPECT_EQ(h.shell.scripts(WebView::main).back(), liveCall(h.app->presentation().liveJSON));
}

TEST(PageBridge, AnExpandedPageThatFinishedLoadingGetsTheLatestSampleAtOnce) {
    AppHarness h;
    h.recordConsent();
    h.launch();
    h.send("size", json("expand"));
    h.loop.advance(1s);
    h.shell.clearRecords();
    h.app->pageFinished(WebView::main);
    EXPECT_EQ(countLiveCalls(h.shell.scripts(WebView::main)), 1);
}

TEST(PageBridge, APageNobodyCanSeeIsNotPushedToAndCatchesUpWhenSeenAgain) {
    AppHarness h;
    h.recordConsent();
    h.launch();
    h.app->pageFinished(WebView::main);
    h.shell.seen = false;
    h.shell.clearRecords();
    h.loop.advance(3s);
    EXPECT_EQ(countLiveCalls(h.shell.scripts(WebView::main)), 0);
    h.shell.seen = true;
    h.app->mainViewSeenAgain();
    EXPECT_EQ(countLiveCalls(h.shell.scripts(WebView::main)), 1);
    EXPECT_EQ(h.shell.scripts(WebView::main).back(), liveCall(h.app->presentation().liveJSON));
}

TEST(PageBridge, ACountdownIsRenderedEvenWhileNobodyCanSeeTheWindow) {
    AppHarness h;
    h.recordConsent();
    h.shell.seen = false;
    h.launch({"--force-thermal", "critical", "--mute"});
    h.loop.advance(250ms);
    ASSERT_EQ(h.app->presentation().mode, UIMode::count);
    EXPECT_FALSE(h.renders().empty());
    EXPECT_NE(h.renders().back().find("'count')"), std::string::npos);
}

TEST(PageBridge, StagePagesGetNoLiveData) {
    AppHarness h;
    h.launch({"--force-thermal", "critical", "--mute"});
    h.loop.advance(250ms);
    ASSERT_EQ(h.app->presentation().pageName, "stagec");
    h.shell.clearRecords();
    h.loop.advance(2s);
    h.app->pageFinished(WebView::main);
    EXPECT_FALSE(h.renders().empty());
    EXPECT_EQ(countLiveCalls(h.shell.scripts(WebView::main)), 0);
}

TEST(PageBridge, ACountdownIsRenderedOncePerWholeSecond) {
    AppHarness h;
    h.recordConsent();
    h.launch({"--force-thermal", "critical", "--mute"});
    h.loop.advance(250ms);
    const auto before = h.renders();
    h.loop.advance(2s);  // eight ticks, two whole seconds
    const auto after = h.renders();
    EXPECT_EQ(after.size() - before.size(), 2U);
    EXPECT_NE(after.back().find("\"remaining\":8"), std::string::npos);
}

TEST(PageBridge, AnUnchangedScreenIsNotRenderedAgain) {
    AppHarness h;
    h.launch();  // the consent page: nothing on it changes by itself
    h.loop.advance(250ms);
    const auto before = h.renders().size();
    h.loop.advance(5s);
    EXPECT_EQ(h.renders().size(), before);
}

TEST(PageBridge, AFinishedStagePageIsRenderedAtOnce) {
    AppHarness h;
    h.launch();
    h.loop.advance(1s);
    const auto before = h.renders();
    h.app->pageFinished(WebView::main);
    const auto after = h.renders();
    ASSERT_EQ(after.size(), before.size() + 1);
    EXPECT_EQ(after.back(), before.back());
}

}  // namespace
}  // namespace velmora::testing
