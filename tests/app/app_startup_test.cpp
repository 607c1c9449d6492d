#include <gtest/gtest.h>

#include <algorithm>
#include <chrono>
#include <fstream>
#include <mutex>

#include "app/app_harness.hpp"
#include "app/controller/start_report.hpp"

namespace velmora::testing {
namespace {

using namespace std::chrono_literals;

bool startsWith(const std::vector<std::string>& lines, std::size_t index, const std::string& text) {
    return index < lines.size() && lines[index].starts_with(text);
}

TEST(AppStartup, LogsBannerSensorAndLiveLinesFirst) {
    AppHarness h;
    h.launch();
    const auto lines = h.logLines();
    ASSERT_GE(lines.size(), 5U);
    EXPECT_EQ(lines[0],
              "---- Velmora Heat Monitor 1.1 launched (live readings; testEmergency=false "
              "dryRun=false mute=false dataDir=" +
                  h.dir.string() + ")");
    EXPECT_EQ(lines[1], "stage-c sensor: LIVE collector snapshot (" +
                            std::string(texts().thermalSource) +
                            ", 1 s); ladder map nominal=NORMAL fair=WARM serious=EXTREME HEAT "
                            "(Stage A, warning only) critical=EMERGENCY (Stage B/C). " +
                            std::string(texts().thermalNote));
    EXPECT_EQ(lines[2], "live: scripted sensors: 0 found; battery temp not available");
    EXPECT_TRUE(startsWith(lines, 3, "stage-c: settings loaded: autoShutdown=true"));
    EXPECT_TRUE(startsWith(lines, 4, "stage-c: thresholds: "));
}

TEST(AppStartup, LiveLineSaysWhenABatteryTemperatureCanBeRead) {
    AppHarness h;
    h.readings->repeat.batteryTemp = TempReading{31, "hwmon BAT0"};
    h.launch();
    EXPECT_TRUE(h.logged("live: scripted sensors: 0 found; battery temp available"));
}

TEST(AppStartup, TestEmergencyAloneGivesTheTestModeTitleAndBanner) {
    AppHarness h;
    auto& app = h.launch({"--test-emergency"});
    EXPECT_EQ(app.baseTitle(), "Velmora Heat Monitor · TEST MODE");
    EXPECT_TRUE(h.logLines().front().find("testEmergency=true dryRun=true") != std::string::npos);
    EXPECT_TRUE(app.engine()->simActive());
    EXPECT_EQ(h.realShutdowner->shutdownCalls + h.realShutdowner->probeCalls, 0);
    EXPECT_EQ(h.countLines("stage-c: SIMULATION started"), 1);
}

TEST(AppStartup, WindowIsCreatedWithTheBaseTitleThenShown) {
    AppHarness h;
    h.launch({"--dry-run-shutdown"});
    EXPECT_TRUE(h.shell.windowCreated);
    EXPECT_TRUE(h.shell.visible);
    EXPECT_EQ(h.shell.title, "Velmora Heat Monitor · TEST MODE");
}

TEST(AppStartup, SimulateDeniedWithoutADryRunUsesTheRealShutdowner) {
    AppHarness h;
    auto& app = h.launch({"--simulate-denied"});
    EXPECT_EQ(app.shutdowner(), h.realShutdowner);
}

TEST(AppStartup, DryRunUsesTheDryRunShutdowner) {
    AppHarness h;
    auto& app = h.launch({"--dry-run-shutdown"});
    EXPECT_NE(app.shutdowner(), h.realShutdowner);
    EXPECT_NE(dynamic_cast<DryRunShutdowner*>(app.shutdowner().get()), nullptr);
}

TEST(AppStartup, MuteChoosesTheMuteSounder) {
    AppHarness h;
    auto& app = h.launch({"--mute"});
    EXPECT_NE(app.sounder(), h.systemSounder);
    app.sounder()->tick();
    EXPECT_EQ(h.countLines("sound: tick (muted)"), 1);
}

TEST(AppStartup, DataDirWithATildeGoesUnderTheHomeDirectory) {
    AppHarness h;
    PlatformEnvironment env;
    env.home = h.dir.string();
    env.workingDir = "/";
    h.build({"--data-dir", "~/nested/heat"}, env).start();
    h.app->willTerminate();
    h.app.reset();
    EXPECT_TRUE(std::filesystem::exists(h.dir / "nested" / "heat" / "heat.log"));
}

TEST(AppStartup, MuteWritesEveryTickCueToTheLog) {
    AppHarness h;
    h.recordConsent();
    h.launch({"--mute", "--dry-run-shutdown", "--force-thermal", "critical"});
    h.loop.advance(11s);
    EXPECT_EQ(h.countLines("sound: tick (muted)"), 4);
    EXPECT_TRUE(h.systemSounder->cues.empty());
}

TEST(AppStartup, NoPermissionProbeAtLaunchWithoutConsent) {
    AppHarness h;
    h.launch();
    EXPECT_EQ(h.realShutdowner->probeCalls, 0);
    EXPECT_EQ(h.countLines("stage-c: automation permission probe"), 0);
}

TEST(AppStartup, ConsentRecordedProbesAtLaunch) {
    AppHarness h;
    h.recordConsent();
    h.launch();
    EXPECT_EQ(h.realShutdowner->probeCalls, 1);
    EXPECT_TRUE(h.logged("stage-c: automation permission probe (launch)"));
}

TEST(AppStartup, ConsentSwitchRecordsTheAnswerThroughTheEngine) {
    AppHarness h;
    auto& app = h.launch({"--consent", "on"});
    EXPECT_TRUE(app.engine()->settingsInForce().enabled());
    EXPECT_TRUE(h.logged("stage-c: consent recorded: autoShutdown=true"));
    EXPECT_EQ(app.presentation().mode, UIMode::home);
}

TEST(AppStartup, TheStartReportNamesAConsentAnswerThatWasNotSaved) {
    AppHarness h;
    // A folder where the settings file belongs: the answer holds, but cannot be saved.
    std::filesystem::create_directories(h.dir / "settings.json" / "in-the-way");
    auto& app = h.launch({"--consent", "on"});
    EXPECT_TRUE(app.engine()->settingsInForce().enabled());
    EXPECT_FALSE(app.startConsentSaved());
    EXPECT_EQ(startProblems(app), std::vector<std::string>{"could not save the consent answer in " +
                                                           (h.dir / "settings.json").string() +
                                                           "; it holds until this run ends"});
}

TEST(AppStartup, TheStartReportIsEmptyWhenTheAnswerWasSaved) {
    AppHarness h;
    auto& app = h.launch({"--consent", "on"});
    EXPECT_TRUE(startProblems(app).empty());
}

TEST(AppStartup, ConsentOffIsRecordedWithoutAutoShutdown) {
    AppHarness h;
    auto& app = h.launch({"--consent", "off"});
    EXPECT_TRUE(app.engine()->settingsInForce().consentRecorded);
    EXPECT_FALSE(app.engine()->settingsInForce().autoShutdown);
    EXPECT_EQ(h.realShutdowner->probeCalls, 0);
}

TEST(AppStartup, FreshInstallShowsTheConsentPage) {
    AppHarness h;
    auto& app = h.launch();
    EXPECT_EQ(app.presentation().mode, UIMode::consent);
    EXPECT_EQ(h.shell.pagesLoaded(WebView::main).back(), "stagec");
    EXPECT_EQ(h.shell.frame.width, 380);
}

TEST(AppStartup, ConsentedLaunchShowsTheCompactHomePage) {
    AppHarness h;
    h.recordConsent();
    auto& app = h.launch();
    EXPECT_EQ(app.presentation().mode, UIMode::home);
    EXPECT_EQ(h.shell.pagesLoaded(WebView::main), std::vector<std::string>{"index"});
    EXPECT_EQ(h.shell.frame.width, 320);
    EXPECT_EQ(h.shell.frame.height, 188 + h.shell.titleBarHeight);
}

TEST(AppStartup, DocumentStartScriptCarriesTokenAndTheme) {
    AppHarness h;
    h.preferences->setText(appearanceDefaultsKey, "dark");
    h.launch();
    EXPECT_EQ(h.shell.documentStartScripts[WebView::main],
              "window.__HEAT_TOKEN__ = '" + h.app->token() + "'; window.__HEAT_THEME__ = 'dark';");
}

TEST(AppStartup, MenusAndHeatItemUnlessDisabled) {
    AppHarness h;
    h.launch();
    EXPECT_EQ(h.shell.mainMenu, mainMenu());
    EXPECT_TRUE(h.shell.heatItemCreated);
    EXPECT_EQ(h.shell.heatItemFirstTitle, "Heat \u2026");
    EXPECT_EQ(h.shell.popoverScript, h.shell.documentStartScripts[WebView::main]);
    EXPECT_EQ(h.shell.pagesLoaded(WebView::menu), std::vector<std::string>{"menubar"});

    AppHarness without;
    without.launch({"--no-menu-item"});
    EXPECT_FALSE(without.shell.heatItemCreated);
    EXPECT_TRUE(without.shell.pagesLoaded(WebView::menu).empty());
}

TEST(AppStartup, ACalmWatchdogSamplesOnceASecondAndTicksWithEachSample) {
    AppHarness h;
    h.recordConsent();
    auto& app = h.launch();
    EXPECT_EQ(app.presentation().liveCount, 1);
    const auto samplesAtStart = h.readings->samplesTaken;
    const auto statusesAtStart = h.shell.statuses.size();
    h.loop.advance(1s);
    EXPECT_EQ(app.presentation().liveCount, 2);
    EXPECT_EQ(h.readings->samplesTaken, samplesAtStart + 1);
    // The sample and the one tick that follows it each report the status.
    EXPECT_EQ(h.shell.statuses.size(), statusesAtStart + 2);
}

TEST(AppStartup, ACountdownTicksFourTimesASecond) {
    AppHarness h;
    h.recordConsent();
    auto& app = h.launch({"--force-thermal", "critical", "--mute"});
    const auto statusesAtStart = h.shell.statuses.size();
    h.loop.advance(1s);
    EXPECT_EQ(app.presentation().liveCount, 2);
    // Four ticks and one sample.
    EXPECT_EQ(h.shell.statuses.size(), statusesAtStart + 5);
}

TEST(AppStartup, TheQuickTicksStopWhenTheEmergencyIsOver) {
    AppHarness h;
    h.recordConsent();
    auto& app = h.launch({"--mute"});
    h.readings->repeat.thermal = ThermalState::critical;
    h.loop.advance(3s);
    ASSERT_EQ(app.presentation().mode, UIMode::count);
    h.readings->repeat.thermal = ThermalState::nominal;
    h.loop.advance(3s);  // the countdown is called off and the window goes home
    ASSERT_EQ(app.presentation().mode, UIMode::home);
    const auto statusesBefore = h.shell.statuses.size();
    h.loop.advance(1s);
    EXPECT_EQ(h.shell.statuses.size(), statusesBefore + 2);
}

TEST(AppStartup, PartsMadeBeforeTheLogAreGivenItOnceItIsOpen) {
    AppHarness h;
    h.launch();
    ASSERT_TRUE(static_cast<bool>(h.earlyPartsLog));
    h.earlyPartsLog("sound: cannot play alarm.wav (no sound system)");
    EXPECT_TRUE(h.logged("sound: cannot play alarm.wav (no sound system)"));
}

TEST(AppStartup, QuitLine) {
    AppHarness h;
    h.launch();
    h.app->willTerminate();
    EXPECT_EQ(h.logLines().back(), "---- quit");
}

TEST(AppStartup, NothingRunsOnceTheControllerIsGone) {
    AppHarness h;
    h.launch();
    h.app.reset();
    const auto samples = h.readings->samplesTaken;
    const auto evaluations = h.shell.evaluations.size();
    h.loop.advance(30s);
    EXPECT_EQ(h.readings->samplesTaken, samples);
    EXPECT_EQ(h.shell.evaluations.size(), evaluations);
    EXPECT_EQ(h.loop.pending(), 0U);
}

TEST(AppStartup, MarkerFromThePreviousRunShowsRelief) {
    AppHarness h;
    h.recordConsent();
    {
        std::ofstream(h.dir / "auto-shutdown.marker")
            << R"({"at":"2026-01-02T03:04:05Z","peakC":108,"reason":"emergency countdown reached 0"})";
    }
    auto& app = h.launch();
    EXPECT_EQ(app.presentation().mode, UIMode::relief);
    EXPECT_FALSE(std::filesystem::exists(h.dir / "auto-shutdown.marker"));
    EXPECT_EQ(h.countLines("ui: mode home -> relief"), 1);
}

TEST(AppStartup, FirstStagePageIsLoggedAsAModeChange) {
    AppHarness h;
    h.launch();
    EXPECT_EQ(h.countLines("ui: mode home -> consent"), 1);
}

TEST(AppStartup, TestEmergencyLogsItsFirstModeChange) {
    AppHarness h;
    h.launch({"--test-emergency"});
    EXPECT_EQ(h.countLines("ui: mode home -> lead"), 1);
}

TEST(AppStartup, StartingOnTheHomePageLogsNoModeChange) {
    AppHarness h;
    h.recordConsent();
    h.launch();
    EXPECT_EQ(h.countLines("ui: mode "), 0);
}

TEST(AppStartup, ClosingTheWindowEndsTheApplication) {
    AppHarness h;
    h.launch();
    h.app->windowClosed();
    EXPECT_TRUE(h.shell.terminated);
    EXPECT_TRUE(h.logged("ui: main window closed"));
}

TEST(AppStartup, UnusableDataDirectoryStillStartsAndAnUnsavedAnswerHoldsForTheRun) {
    // The log file cannot be written there either; its lines still reach the mirror.
    std::mutex mirrorMutex;
    std::vector<std::string> mirrored;
    AppHarness h;
    h.logMirror = [&](const std::string& line) {
        const std::lock_guard lock(mirrorMutex);
        mirrored.push_back(line);
    };
    std::ofstream(h.dir / "blocker") << "a file where the data directory should be";
    PlatformEnvironment env;
    env.home = h.dir.string();
    env.workingDir = h.dir;
    auto& app = h.build({"--data-dir", (h.dir / "blocker" / "data").string()}, env);
    app.start();
    EXPECT_EQ(app.presentation().mode, UIMode::consent);
    auto consent = h.withToken("consent");
    consent["on"] = true;
    h.send("stagec", consent);
    {
        // The engine says so when the answer could not be saved.
        const std::lock_guard lock(mirrorMutex);
        EXPECT_EQ(std::count_if(mirrored.begin(), mirrored.end(),
                                [](const std::string& line) {
                                    return line.starts_with("stage-c: ERROR saving consent: ");
                                }),
                  1);
    }
    h.loop.advance(1s);
    EXPECT_EQ(app.presentation().mode, UIMode::home);
    EXPECT_TRUE(app.engine()->settingsInForce().enabled());
}

}  // namespace
}  // namespace velmora::testing
