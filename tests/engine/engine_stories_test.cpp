#include <gtest/gtest.h>

#include "engine/engine_scenario.hpp"

// Whole emergencies from the first log line to the last, as a user would live through them.
namespace velmora::testing {
namespace {

const std::string kCriticalEnabled =
    "thermal=Critical ladder=108 level=EMERGENCY critical=true enabled=true";
const std::string kDeniedText =
    "execution error: Not authorized to send Apple events to System Events. (-1743)";

using EngineStory = EngineScenario;

/// The lines of a countdown ticked every quarter second, from the tick after its start up to
/// the shutdown call.
std::vector<std::string> countdownToTheCall(const std::string& markerPath) {
    return {
        "stage-c: countdown remaining=10s peak ladder=108",
        "stage-c: event cue remaining=5",
        "stage-c: countdown remaining=5s peak ladder=108",
        "stage-c: event cue remaining=3",
        "stage-c: event cue remaining=2",
        "stage-c: event cue remaining=1",
        "stage-c: event fire remaining=0",
        "stage-c: marker written " + markerPath + " (peak ladder 108)",
        "stage-c: countdown reached 0; calling the shutdown (osascript System Events)",
    };
}

TEST_F(EngineStory, ConsentThenCriticalThenShutdownThatNeverTakesEffect) {
    sensor->reading = kNominal;
    start();
    tickThrough(0, 5);
    EXPECT_TRUE(engine->consent(true, wallAt(5.1)));
    sensor->reading = kCritical;
    tickThrough(5.25, 15.25);  // counts down from 5.25 and calls the shutdown at 15.25
    EXPECT_EQ(markerJson(), (nlohmann::json{{"at", "2027-01-15T08:00:15Z"},
                                            {"peakC", 108},
                                            {"reason", "emergency countdown reached 0"}}));
    EXPECT_EQ(
        markerText(),
        R"({"at":"2027-01-15T08:00:15Z","peakC":108.0,"reason":"emergency countdown reached 0"})");
    queue.runAll();  // the shutdown reports success: nothing to do but wait
    tickThrough(15.5, 45.25);
    std::vector<std::string> expected{
        settingsLoadedLine(true, false),
        thresholdsLine(macosTexts),
        "stage-c: consent recorded: autoShutdown=true",
        "stage-c: automation permission probe (auto-shutdown turned on)",
        "stage-c: automation permission: granted",
        "stage-c: event countdown-start remaining=10",
        "stage-c: automation permission probe (countdown start)",
        "stage-c: automation permission: granted",
        stateLine("idle", "countdown", kCriticalEnabled),
    };
    const auto countdown = countdownToTheCall(markerPath().string());
    expected.insert(expected.end(), countdown.begin(), countdown.end());
    expected.push_back(stateLine("countdown", "fired", kCriticalEnabled));
    expected.push_back(
        "stage-c: still running 30s after the shutdown call; assuming the shutdown did not "
        "happen; clearing marker");
    EXPECT_EQ(lines, expected);
    EXPECT_EQ(sounder->cues, (std::vector<std::string>{"urgent", "tick", "tick", "tick", "tick"}));
    EXPECT_EQ(engine->snapshot().shutdownCalls, 1);
    EXPECT_FALSE(markerExists());
    EXPECT_EQ(engine->snapshot().real.state(), CountdownState::idle);
}

TEST_F(EngineStory, DeniedShutdownThenManualNoticeGraceAndANewCountdown) {
    writeConsent();
    sensor->reading = kCritical;
    shutdowner->shutdownResult = ShutdownError::denied(kDeniedText);
    start();
    tickThrough(0, 10);
    queue.runAll();  // the refusal arrives before the next tick
    EXPECT_FALSE(markerExists());
    auto view = tickAt(10.25);
    EXPECT_EQ(view["state"], "grace");
    EXPECT_EQ(view["graceSecs"], 299);
    EXPECT_EQ(view["permState"], "denied");
    EXPECT_EQ(view["manual"]["perm"], true);
    EXPECT_EQ(view["err"], "Could not shut down: " + kDeniedText);
    EXPECT_EQ(lines.back(), stateLine("fired", "grace", kCriticalEnabled));
    EXPECT_EQ(sounder->cues, (std::vector<std::string>{"urgent", "tick", "tick", "tick", "tick",
                                                       "urgent", "alarm"}));
    tickThrough(11.25, 309.25, 1);  // grace; stage B holds, so the alarm repeats
    tickAt(309.75);
    EXPECT_EQ(engine->snapshot().real.state(), CountdownState::grace);
    EXPECT_EQ(std::count(sounder->cues.begin(), sounder->cues.end(), "alarm"), 20);
    EXPECT_EQ(engine->snapshot().lastEmergencyAlarm, at(295.25));
    view = tickAt(310);
    EXPECT_EQ(view["state"], "countdown");
    EXPECT_EQ(view["remaining"], 10);
    EXPECT_FALSE(view.contains("manual"));  // a new countdown starts from a clean slate
    EXPECT_EQ(view["err"], "");
    EXPECT_EQ(view["permState"], "granted");  // its probe asked again
    EXPECT_EQ(lines.back(), stateLine("grace", "countdown", kCriticalEnabled));
}

TEST_F(EngineStory, CancelAt3SecondsThenGraceThenCooledRelief) {
    writeConsent();
    sensor->reading = kCritical;
    start();
    tickThrough(0, 7);
    engine->cancel(at(7));
    tickThrough(7.25, 120, 1);
    sensor->reading = kNominal;  // the machine cools during grace
    const auto view = tickAt(120.25);
    EXPECT_EQ(view["state"], "grace");
    EXPECT_EQ(view["relief"], (nlohmann::json{{"peak", "Critical"}, {"cancelled", true}}));
    EXPECT_EQ(lines.back(), "stage-c: event cooled remaining=0");
    EXPECT_EQ(shutdowner->shutdownCalls, 0);
    EXPECT_FALSE(markerExists());
    tickThrough(121.25, 306.25, 1);
    tickAt(307);  // grace ends quietly on a calm machine
    EXPECT_EQ(lines.back(),
              stateLine("grace", "idle",
                        "thermal=Nominal ladder=55 level=NORMAL critical=false enabled=true"));
    EXPECT_EQ(engine->snapshot().peak, 108);  // kept through grace, dropped on the next calm tick
    tickAt(307.25);
    EXPECT_EQ(engine->snapshot().peak, 0);
    engine->dismissRelief();
    EXPECT_FALSE(engine->view(at(307))["relief"].is_object());
}

TEST_F(EngineStory, ShutdownAtLaunchNextTimeShowsRelief) {
    writeConsent();
    sensor->reading = kCritical;
    start();
    tickThrough(0, 10);
    ASSERT_TRUE(markerExists());
    engine.reset();  // the machine went down
    lines.clear();
    start(600);
    EXPECT_EQ(lines.at(2),
              "stage-c: marker found at launch (shutdown at 2027-01-15T08:00:10Z, peak ladder "
              "108); showing relief; marker cleared");
    EXPECT_FALSE(markerExists());
    const auto view = tickAt(600);
    EXPECT_EQ(view["relief"], (nlohmann::json{{"peak", "Critical"}, {"cancelled", false}}));
}

}  // namespace
}  // namespace velmora::testing
