#include <gtest/gtest.h>

#include <chrono>

#include "app/app_harness.hpp"
#include "app/core/bridge_scripts.hpp"
#include "app/core/notify_preference.hpp"

namespace velmora::testing {
namespace {

using namespace std::chrono_literals;

using nlohmann::json;

TEST(MenuBar, StoredDarkWithACapitalLoadsAsAuto) {
    AppHarness h;
    h.preferences->setText(appearanceDefaultsKey, "Dark");
    auto& app = h.launch();
    EXPECT_EQ(app.appearance(), AppearancePref::autoTheme);
    EXPECT_TRUE(h.shell.checked[MenuAction::appearanceAuto]);
}

TEST(MenuBar, ChoosingDarkFromTheMenuTellsBothViewsChecksOnlyDarkAndLogs) {
    AppHarness h;
    h.launch();
    h.shell.clearRecords();
    h.app->menuAction(MenuAction::appearanceDark);
    const auto call = themeCall("dark");
    EXPECT_EQ(h.shell.scripts(WebView::main), std::vector<std::string>{call});
    EXPECT_EQ(h.shell.scripts(WebView::menu), std::vector<std::string>{call});
    EXPECT_TRUE(h.shell.checked[MenuAction::appearanceDark]);
    EXPECT_FALSE(h.shell.checked[MenuAction::appearanceAuto]);
    EXPECT_FALSE(h.shell.checked[MenuAction::appearanceLight]);
    EXPECT_TRUE(h.logged("ui: appearance dark"));
    EXPECT_EQ(h.preferences->text(appearanceDefaultsKey), "dark");
    EXPECT_EQ(h.shell.appliedAppearances, std::vector<AppearancePref>{AppearancePref::dark});
    EXPECT_EQ(h.shell.documentStartScripts[WebView::main],
              documentStartScript(h.app->token(), "dark"));
}

TEST(MenuBar, ThemeMessageFromAPageUpdatesChecksAndPopoverButNotTheMainPage) {
    AppHarness h;
    h.launch();
    h.shell.clearRecords();
    h.send("theme", json{{"token", h.app->token()}, {"pref", "light"}});
    EXPECT_TRUE(h.shell.scripts(WebView::main).empty());
    EXPECT_EQ(h.shell.scripts(WebView::menu), std::vector<std::string>{themeCall("light")});
    EXPECT_TRUE(h.shell.checked[MenuAction::appearanceLight]);
    EXPECT_FALSE(h.shell.checked[MenuAction::appearanceAuto]);
    EXPECT_TRUE(h.logged("ui: appearance light"));
}

TEST(MenuBar, WithoutAHeatItemNoThemeCallGoesToThePopover) {
    AppHarness h;
    h.launch({"--no-menu-item"});
    h.shell.clearRecords();
    h.app->menuAction(MenuAction::appearanceLight);
    EXPECT_TRUE(h.shell.scripts(WebView::menu).empty());
    EXPECT_EQ(h.shell.scripts(WebView::main).size(), 1U);
}

TEST(MenuBar, SavingTheSameAppearanceAgainStillWritesAndLogs) {
    AppHarness h;
    h.launch();
    h.app->menuAction(MenuAction::appearanceAuto);
    EXPECT_TRUE(h.logged("ui: appearance auto"));
    EXPECT_EQ(h.preferences->text(appearanceDefaultsKey), "auto");
}

TEST(MenuBar, WithoutACpuTemperatureTheHeatItemReadsTheLabelAndThePlaceholder) {
    AppHarness h;
    h.launch();
    ASSERT_TRUE(h.shell.heatTitle.has_value());
    EXPECT_EQ(h.shell.heatTitle->first, "NORMAL · n/a");
    EXPECT_EQ(h.shell.heatTitle->second, HeatColor::label);
}

TEST(MenuBar, HeatItemRoundsTheTemperatureAndColoursTheLevel) {
    AppHarness h;
    h.readings->repeat.cpuTemp = TempReading{71.5, "hwmon coretemp Package id 0"};
    h.readings->repeat.thermal = ThermalState::fair;
    h.launch();
    EXPECT_EQ(h.shell.heatTitle->first, "WARM · 72°");
    EXPECT_EQ(h.shell.heatTitle->second, HeatColor::yellow);
    h.readings->repeat.thermal = ThermalState::serious;
    h.loop.advance(1s);
    EXPECT_EQ(h.shell.heatTitle->first, "EXTREME HEAT · 72°");
    EXPECT_EQ(h.shell.heatTitle->second, HeatColor::red);
}

TEST(MenuBar, FirstSampleIsLoggedTheSecondToTenthAreNotTheEleventhIs) {
    AppHarness h;
    auto& app = h.launch();
    EXPECT_EQ(app.presentation().liveCount, 1);
    EXPECT_EQ(h.countLines("live: thermal="), 1);
    h.loop.advance(9s);
    EXPECT_EQ(app.presentation().liveCount, 10);
    EXPECT_EQ(h.countLines("live: thermal="), 1);
    h.loop.advance(1s);
    EXPECT_EQ(app.presentation().liveCount, 11);
    EXPECT_EQ(h.countLines("live: thermal="), 2);
}

TEST(MenuBar, SummaryLineNamesEveryField) {
    AppHarness h;
    h.readings->repeat.cpuBusy = 12.4;
    h.readings->repeat.cpuTemp = TempReading{55.9, "hwmon k10temp Tctl"};
    h.launch({"--force-thermal", "critical", "--dry-run-shutdown"});
    const auto lines = h.logLines();
    const auto summary = std::find_if(lines.begin(), lines.end(), [](const std::string& line) {
        return line.starts_with("live: thermal=");
    });
    ASSERT_NE(summary, lines.end());
    EXPECT_EQ(*summary,
              "live: thermal=Critical label=EMERGENCY cpu=12% load=n/a ram=n/a cpuTemp=55 "
              "gpuTemp=n/a battery=n/a gpu=n/a cores=n/a mem=n/a fan=n/a power=n/a sensors=0 "
              "lowPower=false FORCED(true)");
}

/// One push: the last 15 minutes for the sparkline, then the live readings.
void expectPopoverPush(const AppHarness& h) {
    const auto scripts = h.shell.scripts(WebView::menu);
    ASSERT_EQ(scripts.size(), 1U);
    const auto live = ";" + liveCall(h.app->presentation().liveJSON);
    EXPECT_TRUE(scripts.front().starts_with("window.heatLive && window.heatLive.recent && "));
    EXPECT_TRUE(scripts.front().ends_with(live)) << scripts.front();
}

TEST(MenuBar, OpeningThePopoverPushesTheCurrentLiveDataAtOnce) {
    AppHarness h;
    h.launch();
    h.awaitHistory();
    h.shell.clearRecords();
    h.app->toggleMenuPopover();
    EXPECT_TRUE(h.shell.popoverOpen);
    expectPopoverPush(h);
    h.app->toggleMenuPopover();
    EXPECT_FALSE(h.shell.popoverOpen);
}

TEST(MenuBar, AClosedPopoverReceivesNothingAnOpenOneEverySample) {
    AppHarness h;
    h.launch();
    h.shell.clearRecords();
    h.loop.advance(2s);
    EXPECT_TRUE(h.shell.scripts(WebView::menu).empty());
    h.shell.popoverOpen = true;
    h.loop.advance(2s);
    EXPECT_EQ(h.shell.scripts(WebView::menu).size(), 2U);
}

TEST(MenuBar, PopoverPageFinishingItsLoadGetsTheLiveData) {
    AppHarness h;
    h.launch();
    h.awaitHistory();
    h.shell.clearRecords();
    h.app->pageFinished(WebView::menu);
    expectPopoverPush(h);
}

TEST(MenuBar, LiveJsonIsTheLiveModelsText) {
    AppHarness h;
    auto& app = h.launch();
    const auto parsed = json::parse(app.presentation().liveJSON);
    EXPECT_TRUE(parsed.contains("status"));
    EXPECT_TRUE(parsed.contains("sensorList"));
}

TEST(MenuBar, SettingsItemShowsTheSettingsPage) {
    AppHarness h;
    h.recordConsent();
    auto& app = h.launch();
    app.menuAction(MenuAction::settings);
    EXPECT_EQ(app.presentation().mode, UIMode::settings);
    EXPECT_TRUE(h.logged("ui: mode home -> settings"));
}

TEST(MenuBar, TestEmergencyItemStartsASimulation) {
    AppHarness h;
    h.recordConsent();
    auto& app = h.launch();
    app.menuAction(MenuAction::settings);
    ASSERT_TRUE(app.presentation().wantSettings);
    app.menuAction(MenuAction::testEmergency);
    EXPECT_FALSE(app.presentation().wantSettings);
    EXPECT_TRUE(app.engine()->simActive());
    EXPECT_EQ(app.presentation().mode, UIMode::lead);
}

TEST(MenuBar, ExpandAndCollapseItems) {
    AppHarness h;
    h.recordConsent();
    auto& app = h.launch();
    h.shell.clearRecords();
    app.menuAction(MenuAction::expand);
    app.menuAction(MenuAction::collapse);
    EXPECT_EQ(h.shell.pagesLoaded(WebView::main), (std::vector<std::string>{"expanded", "index"}));
    ASSERT_EQ(h.shell.frameChanges.size(), 2U);
    EXPECT_TRUE(h.shell.frameChanges[0].animate);
    EXPECT_TRUE(h.shell.frameChanges[1].animate);
}

TEST(MenuBar, QuitItemEndsTheApplication) {
    AppHarness h;
    h.launch();
    h.app->menuAction(MenuAction::quit);
    EXPECT_TRUE(h.shell.terminated);
}

TEST(MenuBar, NotifyWhenHotIsOnByDefaultAndTheMenuSwitchesAndKeepsIt) {
    AppHarness h;
    auto& app = h.launch();
    EXPECT_TRUE(app.notifyWhenHot());
    EXPECT_TRUE(h.shell.checked[MenuAction::notifyWhenHot]);
    h.app->menuAction(MenuAction::notifyWhenHot);
    EXPECT_FALSE(app.notifyWhenHot());
    EXPECT_FALSE(h.shell.checked[MenuAction::notifyWhenHot]);
    EXPECT_EQ(h.preferences->text(notifyWhenHotKey), "off");
    EXPECT_TRUE(h.logged("ui: notify me when it gets hot off"));
    h.app->menuAction(MenuAction::notifyWhenHot);
    EXPECT_EQ(h.preferences->text(notifyWhenHotKey), "on");
}

TEST(MenuBar, AStoredNotifyWhenHotOffIsCheckedOffAtLaunch) {
    AppHarness h;
    h.preferences->setText(notifyWhenHotKey, "off");
    auto& app = h.launch();
    EXPECT_FALSE(app.notifyWhenHot());
    EXPECT_FALSE(h.shell.checked[MenuAction::notifyWhenHot]);
}

TEST(MenuBar, TheSettingsPageSwitchesNotifyWhenHotAndItsRenderCarriesIt) {
    AppHarness h;
    h.recordConsent();
    h.launch();
    h.send("stagec", h.withToken("settings"));
    h.loop.advance(1s);
    ASSERT_FALSE(h.renders().empty());
    EXPECT_NE(h.renders().back().find("\"notifyWhenHot\":true"), std::string::npos);
    auto body = h.withToken("notify");
    body["on"] = false;
    h.send("stagec", body);
    h.loop.advance(1s);
    EXPECT_EQ(h.preferences->text(notifyWhenHotKey), "off");
    EXPECT_FALSE(h.shell.checked[MenuAction::notifyWhenHot]);
    EXPECT_NE(h.renders().back().find("\"notifyWhenHot\":false"), std::string::npos);
}

TEST(MenuBar, TheTemperatureAsTextChoiceIsKeptAndToldToTheShell) {
    AppHarness h;
    h.launch();
    EXPECT_FALSE(h.shell.checked[MenuAction::figureAsText]);
    h.app->menuAction(MenuAction::figureAsText);
    EXPECT_TRUE(h.shell.checked[MenuAction::figureAsText]);
    EXPECT_EQ(h.preferences->text(figureAsTextKey), "on");
    AppHarness again;
    again.preferences->setText(figureAsTextKey, "on");
    again.launch();
    EXPECT_TRUE(again.shell.checked[MenuAction::figureAsText]);
}

}  // namespace
}  // namespace velmora::testing
