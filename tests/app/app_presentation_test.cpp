#include <gtest/gtest.h>

#include <chrono>

#include "app/app_harness.hpp"
#include "policy/constants.hpp"

namespace velmora::testing {
namespace {

using namespace std::chrono_literals;

using nlohmann::json;

const Size expandedFrame{380, 528};  // 380 by 500 of content under the fake's 28-point title bar
const Size compactFrame{320, 216};

bool isSize(const Rect& frame, Size size) {
    return frame.width == size.width && frame.height == size.height;
}

TEST(StagePresentation, SimulatedCountdownIsCountAndLeavesTheLiveStageAtNone) {
    AppHarness h;
    h.recordConsent();
    auto& app = h.launch({"--mute"});
    h.send("stagec", h.withToken("test"));
    EXPECT_EQ(app.presentation().mode, UIMode::lead);
    h.loop.advance(4500ms);
    EXPECT_EQ(app.presentation().mode, UIMode::count);
    EXPECT_EQ(app.presentation().liveStage, AlertStage::none);
    EXPECT_TRUE(h.logged("ui: mode lead -> count"));
    ASSERT_TRUE(h.shell.countdownItem.has_value());
    EXPECT_TRUE(h.shell.countdownItem->first.starts_with("SIMULATION "));
    EXPECT_EQ(h.shell.countdownItem->second, (Rgb{0.98, 0.75, 0.14}));
}

TEST(StagePresentation, LevelThreeOnTheHomePageExpandsChimesOnceAndAnnounces) {
    AppHarness h;
    h.recordConsent();
    auto& app = h.launch();
    h.shell.clearRecords();
    h.readings->repeat.thermal = ThermalState::serious;
    h.loop.advance(1s);  // the next sample sees it, the next tick acts on it
    EXPECT_EQ(app.presentation().liveStage, AlertStage::extreme);
    EXPECT_TRUE(app.presentation().isExpanded);
    EXPECT_EQ(h.shell.pagesLoaded(WebView::main), std::vector<std::string>{"expanded"});
    ASSERT_EQ(h.shell.frameChanges.size(), 1U);
    EXPECT_TRUE(isSize(h.shell.frameChanges[0].frame, expandedFrame));
    EXPECT_TRUE(h.shell.frameChanges[0].animate);
    EXPECT_EQ(h.shell.sounds, std::vector<std::string>{"Tink"});
    EXPECT_EQ(h.shell.announcements.size(), 1U);

    h.loop.advance(2s);
    EXPECT_EQ(h.shell.sounds.size(), 1U);
    EXPECT_EQ(h.shell.announcements.size(), 1U);
    EXPECT_EQ(h.shell.frameChanges.size(), 1U);
}

TEST(StagePresentation, MutedChimeIsLogged) {
    AppHarness h;
    h.recordConsent();
    h.launch({"--mute"});
    h.readings->repeat.thermal = ThermalState::serious;
    h.loop.advance(1s);
    EXPECT_TRUE(h.shell.sounds.empty());
    EXPECT_EQ(h.countLines("sound: soft chime (muted)"), 1);
}

TEST(StagePresentation, LevelFourWithoutADemoExpandsAndAnnouncesButPlaysNothingNatively) {
    AppHarness h;
    h.recordConsent(false);  // consent given, auto-shutdown off: no countdown, home stays
    auto& app = h.launch();
    h.shell.clearRecords();
    h.readings->repeat.thermal = ThermalState::critical;
    h.loop.advance(1s);
    EXPECT_EQ(app.presentation().mode, UIMode::home);
    EXPECT_EQ(app.presentation().liveStage, AlertStage::emergency);
    ASSERT_FALSE(h.shell.frameChanges.empty());
    EXPECT_TRUE(isSize(h.shell.frameChanges[0].frame, expandedFrame));
    EXPECT_TRUE(h.shell.sounds.empty());
    EXPECT_EQ(h.shell.announcements.size(), 1U);
    // The engine's own alarm still sounds through the sounder.
    EXPECT_EQ(h.systemSounder->cues, std::vector<std::string>{"alarm"});
    // Nor does the window repeat one of its own while the engine's alarm repeats.
    h.loop.advance(watchdog::emergencyAlarmInterval);
    EXPECT_TRUE(h.shell.sounds.empty());
}

TEST(StagePresentation, CollapseRequestDuringAnExtremeStageLeavesTheWindowLarge) {
    AppHarness h;
    h.recordConsent();
    auto& app = h.launch();
    h.readings->repeat.thermal = ThermalState::serious;
    h.loop.advance(1s);
    h.shell.clearRecords();
    h.send("size", json("collapse"));
    h.send("heat", h.withToken("dismiss"));
    EXPECT_TRUE(h.shell.frameChanges.empty());
    EXPECT_TRUE(h.shell.loads.empty());
    EXPECT_TRUE(app.presentation().isExpanded);
}

TEST(StagePresentation, RealCountdownShowsTheItemAndTitleThenLeavingRestoresThem) {
    AppHarness h;
    h.recordConsent();
    auto& app = h.launch({"--force-thermal", "critical", "--mute"});
    EXPECT_EQ(app.presentation().mode, UIMode::count);
    h.loop.advance(3s);
    ASSERT_TRUE(h.shell.countdownItem.has_value());
    EXPECT_EQ(h.shell.countdownItem->first, "EMERGENCY 7s");
    EXPECT_EQ(h.shell.countdownItem->second, (Rgb{0.97, 0.44, 0.44}));
    EXPECT_EQ(h.shell.title, "EMERGENCY · 7s");
    EXPECT_EQ(h.shell.countdownItemsCreated, 1);

    h.send("stagec", h.withToken("cancel"));
    EXPECT_EQ(app.presentation().mode, UIMode::home);
    EXPECT_FALSE(h.shell.countdownItem.has_value());
    EXPECT_EQ(h.shell.title, "Velmora Heat Monitor");
    EXPECT_TRUE(h.logged("ui: mode count -> home"));
}

TEST(StagePresentation, LeavingTheCountdownRestoresTheTestModeTitleUnderADryRun) {
    AppHarness h;
    h.recordConsent();
    h.launch({"--force-thermal", "critical", "--mute", "--dry-run-shutdown"});
    h.loop.advance(1s);
    EXPECT_EQ(h.shell.title, "EMERGENCY · 9s");
    h.send("stagec", h.withToken("cancel"));
    EXPECT_EQ(h.shell.title, "Velmora Heat Monitor · TEST MODE");
}

TEST(StagePresentation, TheNotificationsCancelIsThePagesCancel) {
    AppHarness h;
    h.recordConsent();
    h.launch({"--force-thermal", "critical", "--mute", "--dry-run-shutdown"});
    ASSERT_TRUE(h.countdownCancel);
    h.loop.advance(1s);
    EXPECT_EQ(h.shell.title, "EMERGENCY · 9s");
    h.countdownCancel();
    EXPECT_TRUE(h.logged("ui: countdown cancel asked from the desktop notification"));
    EXPECT_TRUE(h.logged("stage-c: user pressed Keep working · Cancel during the countdown"));
    EXPECT_EQ(h.shell.title, "Velmora Heat Monitor · TEST MODE");
    EXPECT_EQ(h.app->engine()->snapshot().real.state(), CountdownState::grace);
}

TEST(StagePresentation, FiredCountdownReadsShuttingDownButTheTitleKeepsItsSeconds) {
    AppHarness h;
    h.recordConsent();
    auto& app = h.launch({"--force-thermal", "critical", "--mute"});
    h.loop.advance(10250ms);
    EXPECT_EQ(app.engine()->snapshot().real.state(), CountdownState::fired);
    EXPECT_EQ(h.realShutdowner->shutdownCalls, 1);
    ASSERT_TRUE(h.shell.countdownItem.has_value());
    EXPECT_EQ(h.shell.countdownItem->first, "SHUTTING DOWN");
    EXPECT_EQ(h.shell.title, "EMERGENCY · 0s");
}

TEST(StagePresentation, TitleIsSetOnlyWhenItChanges) {
    AppHarness h;
    h.recordConsent();
    h.launch();
    h.shell.clearRecords();
    h.loop.advance(2s);
    EXPECT_EQ(h.shell.titleChanges, 0);
}

TEST(StagePresentation, WindowNearTheTopKeepsItsBottomOnlyAsFarAsTheScreenAllows) {
    AppHarness h;
    h.recordConsent();
    h.launch();
    h.shell.frame = Rect{600, 700, compactFrame.width, compactFrame.height};
    h.app->expand(true);
    EXPECT_EQ(h.shell.frame, (Rect{570, 875 - expandedFrame.height, 380, 528}));
}

TEST(StagePresentation, WithoutAScreenTheWindowIsNotClamped) {
    AppHarness h;
    h.recordConsent();
    h.launch();
    h.shell.screen.reset();
    h.shell.frame = Rect{600, 700, compactFrame.width, compactFrame.height};
    h.app->expand(false);
    EXPECT_EQ(h.shell.frame, (Rect{570, 700, 380, 528}));
}

TEST(StagePresentation, StageFallingBackToNoneReloadsTheHomePageItWasOn) {
    AppHarness h;
    h.recordConsent();
    auto& app = h.launch();
    h.readings->repeat.thermal = ThermalState::serious;
    h.loop.advance(1s);
    h.shell.clearRecords();
    h.readings->repeat.thermal = ThermalState::nominal;
    h.loop.advance(1s);
    EXPECT_EQ(app.presentation().liveStage, AlertStage::none);
    // Still expanded: the stage made it large and nothing collapsed it.
    EXPECT_EQ(h.shell.pagesLoaded(WebView::main), std::vector<std::string>{"expanded"});
    EXPECT_TRUE(h.shell.frameChanges.empty());
}

}  // namespace
}  // namespace velmora::testing
