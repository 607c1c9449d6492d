#include <gtest/gtest.h>

#include "engine/engine_scenario.hpp"

// Every interval runs on the monotonic instants the engine is ticked with; the wall clock only
// dates the marker. And the launch after a shutdown holds off new countdowns for a minute.
namespace velmora::testing {
namespace {

class EngineClock : public EngineScenario {
  protected:
    void SetUp() override {
        writeConsent();
        sensor->reading = kCritical;
    }

    bool fired() const { return engine->snapshot().shutdownCalls == 1; }
};

TEST_F(EngineClock, WallClockSetBackMidCountdownDoesNotMoveTheShutdown) {
    start();
    tickThrough(0, 3);
    wallShift = -60;  // an NTP step back, seen only by the wall clock
    tickThrough(3.25, 9.75);
    EXPECT_FALSE(fired());
    tickAt(10);
    EXPECT_TRUE(fired());
    // The marker carries the wall clock's date, stepped back.
    EXPECT_EQ(markerJson()["at"], "2027-01-15T07:59:10Z");
}

TEST_F(EngineClock, WallClockSetForwardAnHourNeitherFiresEarlyNorRestarts) {
    start();
    tickThrough(0, 3);
    wallShift = 3600;
    tickThrough(3.25, 9.75);
    EXPECT_FALSE(fired());
    for (const std::string& line : takeLines()) {
        EXPECT_EQ(line.find("stale-restart"), std::string::npos) << line;
    }
    tickAt(10);
    EXPECT_TRUE(fired());
}

TEST_F(EngineClock, FailsafeAndGraceRunOnTheMonotonicClock) {
    start();
    tickThrough(0, 10);
    ASSERT_TRUE(fired());
    wallShift = -3600;
    tickThrough(10.25, 39.75);
    EXPECT_EQ(engine->snapshot().real.state(), CountdownState::fired);
    tickAt(40);
    EXPECT_EQ(engine->snapshot().real.state(),
              CountdownState::idle);  // the failsafe, 30 s after the call
}

class EngineReliefHold : public EngineClock {
  protected:
    void SetUp() override {
        EngineClock::SetUp();
        writeMarkerText(
            R"({"at":"2027-01-15T07:00:00Z","peakC":108,"reason":"emergency countdown reached 0"})");
    }
};

TEST_F(EngineReliefHold, NoCountdownForSixtySecondsAfterARelief) {
    start();
    EXPECT_EQ(takeLines().back(),
              "stage-c: no countdown for the next 60s after the shutdown (time to read the notice "
              "and turn automatic shutdown off)");
    tickThrough(0, 59.75);
    EXPECT_EQ(engine->snapshot().real.state(), CountdownState::idle);
    EXPECT_FALSE(fired());
    EXPECT_TRUE(engine->snapshot().relief.has_value());
    tickAt(60);
    EXPECT_EQ(engine->snapshot().real.state(), CountdownState::countdown);
    const auto lines = takeLines();
    EXPECT_NE(std::find(lines.begin(), lines.end(),
                        "stage-c: relief hold over; countdowns allowed again"),
              lines.end());
}

TEST_F(EngineReliefHold, TheHoldIsMeasuredOnTheMonotonicClock) {
    start();
    tickThrough(0, 10);
    wallShift = 3600;  // the wall clock jumps an hour: the hold must not end early
    tickThrough(10.25, 59.75);
    EXPECT_EQ(engine->snapshot().real.state(), CountdownState::idle);
}

TEST_F(EngineReliefHold, ALaunchWithoutAMarkerHasNoHold) {
    std::filesystem::remove(markerPath());
    start();
    tickAt(0);
    EXPECT_EQ(engine->snapshot().real.state(), CountdownState::countdown);
    EXPECT_FALSE(engine->snapshot().reliefHoldUntil.has_value());
}

}  // namespace
}  // namespace velmora::testing
