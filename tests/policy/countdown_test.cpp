#include <gtest/gtest.h>

#include <cmath>
#include <limits>
#include <stdexcept>
#include <vector>

#include "countdown_support.hpp"

namespace velmora {
namespace {

using testing::at;
using testing::ev;
using testing::kCalm;
using testing::kCritical;
using Events = std::vector<CEvent>;

TEST(Machine, StepsOneSecondApartCueAtFiveThreeTwoOneThenFire) {
    Machine m(CConfig::production(), false);
    EXPECT_EQ(m.step(at(0), kCritical), (Events{ev(CEventKind::countdownStart, 10)}));
    EXPECT_EQ(m.remaining(at(0)), 10);
    std::vector<std::pair<int, Events>> seen;
    for (int t = 1; t <= 10; ++t) {
        auto events = m.step(at(t), kCritical);
        if (!events.empty()) seen.emplace_back(t, events);
    }
    const std::vector<std::pair<int, Events>> expected{{5, {ev(CEventKind::cue, 5)}},
                                                       {7, {ev(CEventKind::cue, 3)}},
                                                       {8, {ev(CEventKind::cue, 2)}},
                                                       {9, {ev(CEventKind::cue, 1)}},
                                                       {10, {ev(CEventKind::fire)}}};
    EXPECT_EQ(seen, expected);
    EXPECT_EQ(m.state, CState::fired);
}

TEST(Machine, GapOfExactlyFiveSecondsIsNotStale) {
    Machine m(CConfig::production(), false);
    m.step(at(0), kCritical);
    EXPECT_EQ(m.step(at(5.0), kCritical), (Events{ev(CEventKind::cue, 5)}));
}

TEST(Machine, GapAboveFiveSecondsRestartsTheCountdown) {
    Machine m(CConfig::production(), false);
    m.step(at(0), kCritical);
    EXPECT_EQ(m.step(at(5.001), kCritical),
              (Events{ev(CEventKind::stale), ev(CEventKind::countdownStart, 10)}));
    EXPECT_EQ(m.state, CState::countdown);
    EXPECT_EQ(m.remaining(at(5.001)), 10);
    EXPECT_EQ(m.lastCue, 10);
}

TEST(Machine, CancelAtThreeSecondsLeftGracesCoolsAndRestarts) {
    Machine m(CConfig::production(), false);
    m.step(at(0), kCritical);
    EXPECT_EQ(m.cancel(at(7)), (Events{ev(CEventKind::cancel)}));
    EXPECT_EQ(m.state, CState::grace);
    EXPECT_DOUBLE_EQ(m.graceLeft(at(7)), 300);
    EXPECT_EQ(m.step(at(8), kCalm), (Events{ev(CEventKind::cooled)}));
    EXPECT_FALSE(m.cancelled);
    EXPECT_EQ(m.step(at(306.9), kCritical), Events{});
    EXPECT_EQ(m.step(at(307), kCritical),
              (Events{ev(CEventKind::graceEnd), ev(CEventKind::countdownStart, 10)}));
    EXPECT_EQ(m.state, CState::countdown);
}

TEST(Machine, GraceEndWithoutEmergencyGoesIdle) {
    Machine m(CConfig::production(), false);
    m.step(at(0), kCritical);
    m.cancel(at(1));
    EXPECT_EQ(m.step(at(301), testing::kWarmNotCalm), (Events{ev(CEventKind::graceEnd)}));
    EXPECT_EQ(m.state, CState::idle);
}

TEST(Machine, CancelWhileFiredIsRefusedInProduction) {
    Machine m(CConfig::production(), false);
    m.step(at(0), kCritical);
    m.step(at(4), kCritical);
    m.step(at(8), kCritical);
    m.step(at(10), kCritical);
    ASSERT_EQ(m.state, CState::fired);
    EXPECT_EQ(m.cancel(at(11)), Events{});
    EXPECT_EQ(m.state, CState::fired);
    EXPECT_FALSE(m.cancelled);
}

TEST(Machine, RemainingRoundsUpAndRemainingMsNeverGoesNegative) {
    Machine m(CConfig::production(), false);
    m.startCountdown(at(0));
    EXPECT_EQ(m.remaining(at(0.8)), 10);  // 9.2 s left
    EXPECT_EQ(m.remaining(at(10)), 0);
    EXPECT_EQ(m.remainingMs(at(10.3)), 0);
    EXPECT_EQ(m.remainingMs(at(0.8)), 9200);
}

TEST(Machine, RemainingMsRoundsHalfAwayFromZero) {
    // Near the epoch so that half a millisecond is exactly representable enough.
    Machine m(CConfig::production(), false);
    m.startCountdown(MonoTime::fromSeconds(0));
    EXPECT_EQ(m.remainingMs(MonoTime::fromSeconds(9.9995)), 1);
    EXPECT_EQ(m.remainingMs(MonoTime::fromSeconds(9.9996)), 0);
}

TEST(Machine, RemainingIsZeroOutsideACountdown) {
    Machine m(CConfig::production(), false);
    EXPECT_EQ(m.remaining(at(0)), 0);
    EXPECT_EQ(m.remainingMs(at(0)), 0);
    EXPECT_EQ(m.graceLeft(at(0)), 0);
}

TEST(Machine, SimulationCompletesAndStaysDone) {
    Machine m(CConfig::production(), true);
    m.step(at(0), kCritical);
    for (int t = 1; t < 10; ++t)
        m.step(at(t), kCritical);
    EXPECT_EQ(m.step(at(10), kCritical), (Events{ev(CEventKind::simComplete)}));
    EXPECT_EQ(m.state, CState::done);
    EXPECT_EQ(m.step(at(11), kCritical), Events{});
    EXPECT_EQ(m.step(at(12), kCalm), Events{});
}

TEST(Machine, DoneAfterACancelStillReportsCooled) {
    Machine m(CConfig::production(), true);
    m.step(at(0), kCritical);
    m.cancel(at(1));
    m.state = CState::done;
    EXPECT_EQ(m.step(at(2), kCalm), (Events{ev(CEventKind::cooled)}));
    EXPECT_EQ(m.step(at(3), kCalm), Events{});
}

TEST(Machine, FirstStepAfterConstructionIsNeverStale) {
    Machine m(CConfig::production(), false);
    EXPECT_EQ(m.step(at(1000), kCritical), (Events{ev(CEventKind::countdownStart, 10)}));
}

TEST(Machine, FirstStepAfterResetIsNeverStale) {
    Machine m(CConfig::production(), false);
    m.step(at(0), kCritical);
    m.reset();
    EXPECT_FALSE(m.last.has_value());
    EXPECT_EQ(m.step(at(100), kCritical), (Events{ev(CEventKind::countdownStart, 10)}));
}

TEST(Machine, SkippedCueSecondsGiveOneCueWithTheActualRemainder) {
    Machine m(CConfig::production(), false);
    m.step(at(0), kCritical);
    EXPECT_EQ(m.step(at(4), kCritical), Events{});  // 6 left
    EXPECT_EQ(m.step(at(6), kCritical), (Events{ev(CEventKind::cue, 4)}));
    EXPECT_EQ(m.step(at(9), kCritical), (Events{ev(CEventKind::cue, 1)}));
}

TEST(Machine, NonFiniteCountdownLengthFailsLoudly) {
    Machine nan(CConfig{std::nan(""), 300, 5, false}, false);
    EXPECT_THROW(nan.startCountdown(at(0)), std::invalid_argument);
    EXPECT_EQ(nan.state, CState::idle);
    Machine inf(CConfig{std::numeric_limits<double>::infinity(), 300, 5, false}, false);
    EXPECT_THROW(inf.step(at(0), kCritical), std::invalid_argument);
}

TEST(Machine, FractionalLengthTruncatesLastCue) {
    Machine m(CConfig{7.9, 300, 5, false}, false);
    EXPECT_EQ(m.startCountdown(at(0)), (Events{ev(CEventKind::countdownStart, 8)}));
    EXPECT_EQ(m.lastCue, 7);
}

TEST(Machine, StaleRuleOffWhenZero) {
    Machine m(CConfig{10, 300, 0, false}, false);
    m.step(at(0), kCritical);
    EXPECT_EQ(m.step(at(9), kCritical), (Events{ev(CEventKind::cue, 1)}));
}

TEST(CConfig, ProductionValues) {
    EXPECT_EQ(CConfig::production(), (CConfig{10, 300, 5, false}));
}

TEST(CEvent, EqualityComparesBothFields) {
    EXPECT_EQ(ev(CEventKind::cue, 3), ev(CEventKind::cue, 3));
    EXPECT_NE(ev(CEventKind::cue, 3), ev(CEventKind::cue, 2));
    EXPECT_NE(ev(CEventKind::cue, 3), ev(CEventKind::countdownStart, 3));
}

TEST(RawValues, StatesAndEventKinds) {
    EXPECT_EQ(rawValue(CState::idle), "idle");
    EXPECT_EQ(rawValue(CState::countdown), "countdown");
    EXPECT_EQ(rawValue(CState::fired), "fired");
    EXPECT_EQ(rawValue(CState::grace), "grace");
    EXPECT_EQ(rawValue(CState::done), "done");
    EXPECT_EQ(rawValue(CEventKind::countdownStart), "countdown-start");
    EXPECT_EQ(rawValue(CEventKind::cue), "cue");
    EXPECT_EQ(rawValue(CEventKind::fire), "fire");
    EXPECT_EQ(rawValue(CEventKind::simComplete), "sim-complete");
    EXPECT_EQ(rawValue(CEventKind::cancel), "cancel");
    EXPECT_EQ(rawValue(CEventKind::abort), "abort");
    EXPECT_EQ(rawValue(CEventKind::graceEnd), "grace-end");
    EXPECT_EQ(rawValue(CEventKind::cooled), "cooled");
    EXPECT_EQ(rawValue(CEventKind::stale), "stale-restart");
}

}  // namespace
}  // namespace velmora
