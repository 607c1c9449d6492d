#include <gtest/gtest.h>

#include "engine/engine_scenario.hpp"

// The emergency road through the tick: countdown, cues, alarm, abort, stale restart.
namespace velmora::testing {
namespace {

class EngineCountdown : public EngineScenario {
  protected:
    void SetUp() override {
        writeConsent();
        start();
        takeLines();
        sensor->reading = kCritical;
    }

    static inline const std::string kCriticalEnabled =
        "thermal=Critical ladder=108 level=EMERGENCY critical=true enabled=true";
};

TEST_F(EngineCountdown, CriticalWithConsentCountsDownWithCuesAndCallsTheShutdown) {
    tickThrough(0, 10);
    EXPECT_EQ(takeLines(),
              (std::vector<std::string>{
                  "stage-c: event countdown-start remaining=10",
                  "stage-c: automation permission probe (countdown start)",
                  "stage-c: automation permission: granted",
                  stateLine("idle", "countdown", kCriticalEnabled),
                  "stage-c: countdown remaining=10s peak ladder=108",  // t=0.25
                  "stage-c: event cue remaining=5",                    // t=5
                  "stage-c: countdown remaining=5s peak ladder=108",   // t=5.25
                  "stage-c: event cue remaining=3",
                  "stage-c: event cue remaining=2",
                  "stage-c: event cue remaining=1",
                  "stage-c: event fire remaining=0",
                  "stage-c: marker written " + markerPath().string() + " (peak ladder 108)",
                  "stage-c: countdown reached 0; calling the shutdown (osascript System Events)",
                  stateLine("countdown", "fired", kCriticalEnabled),
              }));
    EXPECT_EQ(sounder->cues, (std::vector<std::string>{"urgent", "tick", "tick", "tick", "tick"}));
    EXPECT_EQ(engine->snapshot().shutdownCalls, 1);
    EXPECT_EQ(shutdowner->shutdownCalls, 1);
    EXPECT_EQ(engine->snapshot().firedAt, at(10));
    EXPECT_EQ(engine->snapshot().real.state(), CountdownState::fired);
    EXPECT_EQ(markerJson(), (nlohmann::json{{"at", "2027-01-15T08:00:10Z"},
                                            {"peakC", 108},
                                            {"reason", "emergency countdown reached 0"}}));
}

TEST_F(EngineCountdown, CuesFallOnTheSecondsTheyName) {
    for (int second = 0; second <= 9; ++second) {
        tickAt(second);
        const bool cueSecond = second == 5 || second >= 7;  // 5, 3, 2 and 1 left
        const std::size_t ticks = second < 5 ? 0 : (second < 7 ? 1 : second - 5);
        EXPECT_EQ(sounder->cues.size(), 1 + ticks) << "at t=" << second;
        if (cueSecond) {
            EXPECT_EQ(sounder->cues.back(), "tick") << "at t=" << second;
        }
    }
    EXPECT_EQ(shutdowner->shutdownCalls, 0);
    tickAt(9.999);
    EXPECT_EQ(shutdowner->shutdownCalls, 0);
    tickAt(10);
    EXPECT_EQ(shutdowner->shutdownCalls, 1);
}

TEST_F(EngineCountdown, WithoutConsentThereIsNoCountdownButTheAlarmRepeatsEvery15Seconds) {
    withdrawConsent();
    tickThrough(0, 31);
    EXPECT_EQ(takeLines(),  // the state never changes
              (std::vector<std::string>{"stage-c: settings changed: autoShutdown=true "
                                        "consentRecorded=false enabled=false"}));
    EXPECT_EQ(sounder->cues, (std::vector<std::string>{"alarm", "alarm", "alarm"}));
    EXPECT_EQ(engine->snapshot().lastEmergencyAlarm, at(30));
    EXPECT_EQ(engine->snapshot().real.state(), CountdownState::idle);
    EXPECT_EQ(shutdowner->shutdownCalls, 0);
    EXPECT_EQ(shutdowner->probeCalls, 0);
    EXPECT_FALSE(markerExists());
}

TEST_F(EngineCountdown, AlarmWaitsTheFullIntervalBetweenRepeats) {
    withdrawConsent();
    tickAt(0);
    tickAt(14.999);
    EXPECT_EQ(sounder->cues.size(), 1U);
    tickAt(15);
    EXPECT_EQ(sounder->cues.size(), 2U);
}

TEST_F(EngineCountdown, StageBEndingAt4SecondsLeftAbortsAndClearsTheMarker) {
    tickThrough(0, 5.75);
    writeMarkerText("left behind");  // whatever is there must go on an abort
    takeLines();
    sensor->reading = kSerious;
    tickAt(6);  // 4 s left
    EXPECT_EQ(takeLines(),
              (std::vector<std::string>{
                  "stage-c: event abort remaining=0",
                  stateLine("countdown", "idle",
                            "thermal=Serious ladder=96 level=EXTREME HEAT critical=false "
                            "enabled=true"),
              }));
    EXPECT_FALSE(markerExists());
    EXPECT_EQ(engine->snapshot().real.state(), CountdownState::idle);
    EXPECT_EQ(engine->snapshot().peak, 108);  // kept on the tick the countdown ended
    tickAt(6.25);
    EXPECT_EQ(engine->snapshot().peak, 0);
    EXPECT_EQ(shutdowner->shutdownCalls, 0);
}

TEST_F(EngineCountdown, TicksMoreThan5SecondsApartRestartTheCountdown) {
    tickAt(0);
    tickAt(1);
    writeMarkerText("left behind");
    takeLines();
    const auto view = tickAt(6.001);
    EXPECT_EQ(takeLines(), (std::vector<std::string>{
                               "stage-c: event stale-restart remaining=0",
                               "stage-c: event countdown-start remaining=10",
                               "stage-c: automation permission probe (countdown start)",
                               "stage-c: automation permission: granted",
                               "stage-c: countdown remaining=10s peak ladder=108",
                           }));
    EXPECT_FALSE(markerExists());
    EXPECT_EQ(view["remaining"], 10);
    EXPECT_EQ(engine->snapshot().real.deadline(), at(16.001));
    EXPECT_EQ(sounder->cues, (std::vector<std::string>{"urgent", "urgent"}));
    tickAt(15.9);
    EXPECT_EQ(shutdowner->shutdownCalls, 0);
}

TEST_F(EngineCountdown, TicksExactly5SecondsApartDoNotRestart) {
    tickAt(0);
    tickAt(5);
    EXPECT_EQ(engine->snapshot().real.deadline(), at(10));
    EXPECT_EQ(sounder->cues, (std::vector<std::string>{"urgent", "tick"}));
}

TEST_F(EngineCountdown, PeakFollowsTheHighestCriticalReading) {
    tickAt(0);
    sensor->reading = 120;
    tickAt(1);
    sensor->reading = 104;
    tickAt(2);
    EXPECT_EQ(engine->snapshot().peak, 120);
    sensor->reading.reset();  // no reading is not critical: the countdown ends, peak kept
    tickAt(3);
    EXPECT_EQ(engine->snapshot().real.state(), CountdownState::idle);
    EXPECT_EQ(engine->snapshot().peak, 120);
    tickAt(4);
    EXPECT_EQ(engine->snapshot().peak, 0);
}

TEST_F(EngineCountdown, AnAbsentReadingIsNeitherCalmNorCritical) {
    sensor->reading.reset();
    const auto view = tickAt(0);
    EXPECT_EQ(engine->snapshot().real.state(), CountdownState::idle);
    EXPECT_FALSE(engine->snapshot().level.has_value());
    EXPECT_TRUE(sounder->cues.empty());
    EXPECT_EQ(view["level"], -1);
}

}  // namespace
}  // namespace velmora::testing
