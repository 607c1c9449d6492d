#include <gtest/gtest.h>

#include <chrono>
#include <cmath>
#include <limits>
#include <stdexcept>
#include <vector>

#include "countdown_support.hpp"
#include "policy/constants.hpp"

namespace velmora {
namespace {

using testing::at;
using testing::ev;
using testing::kCalm;
using testing::kCritical;
using Events = std::vector<CountdownEvent>;
using namespace std::chrono_literals;

TEST(Countdown, StepsOneSecondApartCueAtFiveThreeTwoOneThenFire) {
    Countdown m(CountdownConfig::production(), false);
    EXPECT_EQ(m.step(at(0), kCritical), (Events{ev(CountdownEventKind::countdownStart, 10)}));
    EXPECT_EQ(m.remaining(at(0)), 10);
    std::vector<std::pair<int, Events>> seen;
    for (int t = 1; t <= 10; ++t) {
        auto events = m.step(at(t), kCritical);
        if (!events.empty()) seen.emplace_back(t, events);
    }
    const std::vector<std::pair<int, Events>> expected{{5, {ev(CountdownEventKind::cue, 5)}},
                                                       {7, {ev(CountdownEventKind::cue, 3)}},
                                                       {8, {ev(CountdownEventKind::cue, 2)}},
                                                       {9, {ev(CountdownEventKind::cue, 1)}},
                                                       {10, {ev(CountdownEventKind::fire)}}};
    EXPECT_EQ(seen, expected);
    EXPECT_EQ(m.state(), CountdownState::fired);
}

TEST(Countdown, StartsAtItsLengthWhateverTheClockReads) {
    // At this instant (t + 10) - t is 10.000000000000114 in floating point.
    const auto start = MonoTime::fromSeconds(1020.4227888583981);
    ASSERT_GT((start + 10s) - start, 10s);
    Countdown m(CountdownConfig::production(), false);
    const auto events = m.startCountdown(start);
    ASSERT_EQ(events.size(), 1U);
    EXPECT_EQ(events[0].remaining, watchdog::countdownLength.count());
    EXPECT_EQ(m.remaining(start), watchdog::countdownLength.count());
    EXPECT_EQ(m.remaining(start + 1ms), watchdog::countdownLength.count());
    EXPECT_EQ(m.remaining(start + 1s), watchdog::countdownLength.count() - 1);
}

TEST(Countdown, GapOfExactlyFiveSecondsIsNotStale) {
    Countdown m(CountdownConfig::production(), false);
    m.step(at(0), kCritical);
    EXPECT_EQ(m.step(at(5.0), kCritical), (Events{ev(CountdownEventKind::cue, 5)}));
}

TEST(Countdown, GapAboveFiveSecondsRestartsTheCountdown) {
    Countdown m(CountdownConfig::production(), false);
    m.step(at(0), kCritical);
    EXPECT_EQ(m.step(at(5.001), kCritical),
              (Events{ev(CountdownEventKind::stale), ev(CountdownEventKind::countdownStart, 10)}));
    EXPECT_EQ(m.state(), CountdownState::countdown);
    EXPECT_EQ(m.remaining(at(5.001)), 10);
    EXPECT_EQ(m.lastCue(), 10);
}

TEST(Countdown, CancelAtThreeSecondsLeftGracesCoolsAndRestarts) {
    Countdown m(CountdownConfig::production(), false);
    m.step(at(0), kCritical);
    EXPECT_EQ(m.cancel(at(7)), (Events{ev(CountdownEventKind::cancel)}));
    EXPECT_EQ(m.state(), CountdownState::grace);
    EXPECT_DOUBLE_EQ(m.graceLeft(at(7)).count(), 300);
    EXPECT_EQ(m.step(at(8), kCalm), (Events{ev(CountdownEventKind::cooled)}));
    EXPECT_FALSE(m.cancelled());
    EXPECT_EQ(m.step(at(306.9), kCritical), Events{});
    EXPECT_EQ(m.step(at(307), kCritical), (Events{ev(CountdownEventKind::graceEnd),
                                                  ev(CountdownEventKind::countdownStart, 10)}));
    EXPECT_EQ(m.state(), CountdownState::countdown);
}

TEST(Countdown, GraceEndWithoutEmergencyGoesIdle) {
    Countdown m(CountdownConfig::production(), false);
    m.step(at(0), kCritical);
    m.cancel(at(1));
    EXPECT_EQ(m.step(at(301), testing::kWarmNotCalm), (Events{ev(CountdownEventKind::graceEnd)}));
    EXPECT_EQ(m.state(), CountdownState::idle);
}

TEST(Countdown, CancelWhileFiredIsRefusedInProduction) {
    Countdown m(CountdownConfig::production(), false);
    m.step(at(0), kCritical);
    m.step(at(4), kCritical);
    m.step(at(8), kCritical);
    m.step(at(10), kCritical);
    ASSERT_EQ(m.state(), CountdownState::fired);
    EXPECT_EQ(m.cancel(at(11)), Events{});
    EXPECT_EQ(m.state(), CountdownState::fired);
    EXPECT_FALSE(m.cancelled());
}

TEST(Countdown, RemainingRoundsUpAndRemainingMsNeverGoesNegative) {
    Countdown m(CountdownConfig::production(), false);
    m.startCountdown(at(0));
    EXPECT_EQ(m.remaining(at(0.8)), 10);  // 9.2 s left
    EXPECT_EQ(m.remaining(at(10)), 0);
    EXPECT_EQ(m.remainingMs(at(10.3)), 0);
    EXPECT_EQ(m.remainingMs(at(0.8)), 9200);
}

TEST(Countdown, RemainingMsRoundsHalfAwayFromZero) {
    // Near the epoch so that half a millisecond is exactly representable enough.
    Countdown m(CountdownConfig::production(), false);
    m.startCountdown(MonoTime::fromSeconds(0));
    EXPECT_EQ(m.remainingMs(MonoTime::fromSeconds(9.9995)), 1);
    EXPECT_EQ(m.remainingMs(MonoTime::fromSeconds(9.9996)), 0);
}

TEST(Countdown, RemainingIsZeroOutsideACountdown) {
    Countdown m(CountdownConfig::production(), false);
    EXPECT_EQ(m.remaining(at(0)), 0);
    EXPECT_EQ(m.remainingMs(at(0)), 0);
    EXPECT_EQ(m.graceLeft(at(0)), 0s);
}

TEST(Countdown, SimulationCompletesAndStaysDone) {
    Countdown m(CountdownConfig::production(), true);
    m.step(at(0), kCritical);
    for (int t = 1; t < 10; ++t)
        m.step(at(t), kCritical);
    EXPECT_EQ(m.step(at(10), kCritical), (Events{ev(CountdownEventKind::simComplete)}));
    EXPECT_EQ(m.state(), CountdownState::done);
    EXPECT_EQ(m.step(at(11), kCritical), Events{});
    EXPECT_EQ(m.step(at(12), kCalm), Events{});
}

TEST(Countdown, DoneAfterACancelStillReportsCooled) {
    const CountdownConfig cfg{Seconds(10), Seconds(5), Seconds(0), false};
    Countdown m(cfg, true);
    m.step(at(0), kCritical);
    m.cancel(at(1));
    m.step(at(6), kCritical);  // the grace ends while still critical: the rehearsal runs again
    m.step(at(16), kCritical);
    ASSERT_EQ(m.state(), CountdownState::done);
    ASSERT_TRUE(m.cancelled());
    EXPECT_EQ(m.step(at(17), kCalm), (Events{ev(CountdownEventKind::cooled)}));
    EXPECT_EQ(m.step(at(18), kCalm), Events{});
}

TEST(Countdown, FirstStepAfterConstructionIsNeverStale) {
    Countdown m(CountdownConfig::production(), false);
    EXPECT_EQ(m.step(at(1000), kCritical), (Events{ev(CountdownEventKind::countdownStart, 10)}));
}

TEST(Countdown, FirstStepAfterResetIsNeverStale) {
    Countdown m(CountdownConfig::production(), false);
    m.step(at(0), kCritical);
    m.reset();
    EXPECT_FALSE(m.lastStep().has_value());
    EXPECT_EQ(m.step(at(100), kCritical), (Events{ev(CountdownEventKind::countdownStart, 10)}));
}

TEST(Countdown, SkippedCueSecondsGiveOneCueWithTheActualRemainder) {
    Countdown m(CountdownConfig::production(), false);
    m.step(at(0), kCritical);
    EXPECT_EQ(m.step(at(4), kCritical), Events{});  // 6 left
    EXPECT_EQ(m.step(at(6), kCritical), (Events{ev(CountdownEventKind::cue, 4)}));
    EXPECT_EQ(m.step(at(9), kCritical), (Events{ev(CountdownEventKind::cue, 1)}));
}

TEST(Countdown, NonFiniteCountdownLengthFailsLoudly) {
    Countdown nan(CountdownConfig{Seconds(std::nan("")), 300s, 5s, false}, false);
    EXPECT_THROW(nan.startCountdown(at(0)), std::invalid_argument);
    EXPECT_EQ(nan.state(), CountdownState::idle);
    Countdown inf(
        CountdownConfig{Seconds(std::numeric_limits<double>::infinity()), 300s, 5s, false}, false);
    EXPECT_THROW(inf.step(at(0), kCritical), std::invalid_argument);
}

TEST(Countdown, FractionalLengthTruncatesLastCue) {
    Countdown m(CountdownConfig{Seconds(7.9), 300s, 5s, false}, false);
    EXPECT_EQ(m.startCountdown(at(0)), (Events{ev(CountdownEventKind::countdownStart, 8)}));
    EXPECT_EQ(m.lastCue(), 7);
}

TEST(Countdown, StaleRuleOffWhenZero) {
    Countdown m(CountdownConfig{10s, 300s, 0s, false}, false);
    m.step(at(0), kCritical);
    EXPECT_EQ(m.step(at(9), kCritical), (Events{ev(CountdownEventKind::cue, 1)}));
}

TEST(CountdownConfig, ProductionValues) {
    EXPECT_EQ(CountdownConfig::production(), (CountdownConfig{10s, 300s, 5s, false}));
}

TEST(CountdownEvent, EqualityComparesBothFields) {
    EXPECT_EQ(ev(CountdownEventKind::cue, 3), ev(CountdownEventKind::cue, 3));
    EXPECT_NE(ev(CountdownEventKind::cue, 3), ev(CountdownEventKind::cue, 2));
    EXPECT_NE(ev(CountdownEventKind::cue, 3), ev(CountdownEventKind::countdownStart, 3));
}

TEST(RawValues, StatesAndEventKinds) {
    EXPECT_EQ(rawValue(CountdownState::idle), "idle");
    EXPECT_EQ(rawValue(CountdownState::countdown), "countdown");
    EXPECT_EQ(rawValue(CountdownState::fired), "fired");
    EXPECT_EQ(rawValue(CountdownState::grace), "grace");
    EXPECT_EQ(rawValue(CountdownState::done), "done");
    EXPECT_EQ(rawValue(CountdownEventKind::countdownStart), "countdown-start");
    EXPECT_EQ(rawValue(CountdownEventKind::cue), "cue");
    EXPECT_EQ(rawValue(CountdownEventKind::fire), "fire");
    EXPECT_EQ(rawValue(CountdownEventKind::simComplete), "sim-complete");
    EXPECT_EQ(rawValue(CountdownEventKind::cancel), "cancel");
    EXPECT_EQ(rawValue(CountdownEventKind::abort), "abort");
    EXPECT_EQ(rawValue(CountdownEventKind::graceEnd), "grace-end");
    EXPECT_EQ(rawValue(CountdownEventKind::cooled), "cooled");
    EXPECT_EQ(rawValue(CountdownEventKind::stale), "stale-restart");
}

}  // namespace
}  // namespace velmora
