// The countdown machine's transition table, one test per row.
#include <gtest/gtest.h>

#include <chrono>
#include <vector>

#include "countdown_support.hpp"

namespace velmora {
namespace {

using testing::at;
using testing::ev;
using testing::kCalm;
using testing::kCritical;
using testing::kCriticalDisabled;
using testing::kWarmNotCalm;
using Events = std::vector<CountdownEvent>;

Countdown counting(bool sim = false, CountdownConfig cfg = CountdownConfig::production()) {
    Countdown m(cfg, sim);
    m.step(at(0), kCritical);
    return m;
}

Countdown fired(CountdownConfig cfg = CountdownConfig::production()) {
    Countdown m = counting(false, cfg);
    m.step(at(5), kCritical);
    m.step(at(10), kCritical);
    return m;
}

TEST(MachineTable, IdleStepEnabledAndCriticalStartsCountdown) {
    Countdown m(CountdownConfig::production(), false);
    EXPECT_EQ(m.step(at(0), kCritical), (Events{ev(CountdownEventKind::countdownStart, 10)}));
    EXPECT_EQ(m.state(), CountdownState::countdown);
}

TEST(MachineTable, IdleStepOtherwiseStaysIdle) {
    Countdown m(CountdownConfig::production(), false);
    EXPECT_EQ(m.step(at(0), kCriticalDisabled), Events{});
    EXPECT_EQ(m.step(at(1), kWarmNotCalm), Events{});
    EXPECT_EQ(m.state(), CountdownState::idle);
}

TEST(MachineTable, CountdownStepWithoutEmergencyAborts) {
    Countdown m = counting();
    EXPECT_EQ(m.step(at(1), kWarmNotCalm), (Events{ev(CountdownEventKind::abort)}));
    EXPECT_EQ(m.state(), CountdownState::idle);
}

TEST(MachineTable, CountdownStepWhenDisabledAborts) {
    Countdown m = counting();
    EXPECT_EQ(m.step(at(1), kCriticalDisabled), (Events{ev(CountdownEventKind::abort)}));
    EXPECT_EQ(m.state(), CountdownState::idle);
}

TEST(MachineTable, CountdownStaleGapRestarts) {
    Countdown m = counting();
    EXPECT_EQ(m.step(at(6), kCritical),
              (Events{ev(CountdownEventKind::stale), ev(CountdownEventKind::countdownStart, 10)}));
    EXPECT_EQ(m.state(), CountdownState::countdown);
}

TEST(MachineTable, CountdownDeadlineRealFires) {
    Countdown m = counting();
    m.step(at(5), kCritical);
    EXPECT_EQ(m.step(at(10), kCritical), (Events{ev(CountdownEventKind::fire)}));
    EXPECT_EQ(m.state(), CountdownState::fired);
}

TEST(MachineTable, CountdownDeadlineSimulationCompletes) {
    Countdown m = counting(true);
    m.step(at(5), kCritical);
    EXPECT_EQ(m.step(at(10), kCritical), (Events{ev(CountdownEventKind::simComplete)}));
    EXPECT_EQ(m.state(), CountdownState::done);
}

TEST(MachineTable, CountdownBeforeDeadlineCuesOnlyWhenACueSecondPassed) {
    Countdown m = counting();
    EXPECT_EQ(m.step(at(1), kCritical), Events{});
    EXPECT_EQ(m.step(at(5), kCritical), (Events{ev(CountdownEventKind::cue, 5)}));
    EXPECT_EQ(m.step(at(5.5), kCritical), Events{});
    EXPECT_EQ(m.state(), CountdownState::countdown);
}

TEST(MachineTable, CountdownCancelEntersGrace) {
    Countdown m = counting();
    EXPECT_EQ(m.cancel(at(2)), (Events{ev(CountdownEventKind::cancel)}));
    EXPECT_EQ(m.state(), CountdownState::grace);
    EXPECT_TRUE(m.cancelled());
    EXPECT_EQ(m.graceUntil(), at(302));
}

TEST(MachineTable, FiredStepStaysFired) {
    Countdown m = fired();
    EXPECT_EQ(m.step(at(11), kCritical), Events{});
    EXPECT_EQ(m.step(at(40), kCalm), Events{});
    EXPECT_EQ(m.state(), CountdownState::fired);
}

TEST(MachineTable, FiredCancelWithFiredCancelOnEntersGrace) {
    Countdown m = fired(CountdownConfig{std::chrono::seconds(10), std::chrono::seconds(300),
                                        std::chrono::seconds(5), true});
    EXPECT_EQ(m.cancel(at(11)), (Events{ev(CountdownEventKind::cancel)}));
    EXPECT_EQ(m.state(), CountdownState::grace);
}

TEST(MachineTable, FiredCancelWithFiredCancelOffIsRefused) {
    Countdown m = fired();
    EXPECT_EQ(m.cancel(at(11)), Events{});
    EXPECT_EQ(m.state(), CountdownState::fired);
}

TEST(MachineTable, FiredShutdownFailedEntersGraceWithoutCancel) {
    Countdown m = fired();
    m.shutdownFailed(at(12));
    EXPECT_EQ(m.state(), CountdownState::grace);
    EXPECT_EQ(m.graceUntil(), at(312));
    EXPECT_FALSE(m.cancelled());
    EXPECT_EQ(m.step(at(13), kCalm), Events{});  // no cooled without a cancel
}

TEST(MachineTable, ShutdownFailedOutsideFiredDoesNothing) {
    Countdown m = counting();
    m.shutdownFailed(at(1));
    EXPECT_EQ(m.state(), CountdownState::countdown);
}

TEST(MachineTable, GraceStepBeforeEndStaysInGrace) {
    Countdown m = counting();
    m.cancel(at(1));
    EXPECT_EQ(m.step(at(2), kCritical), Events{});
    EXPECT_EQ(m.step(at(3), kCalm), (Events{ev(CountdownEventKind::cooled)}));
    EXPECT_EQ(m.step(at(4), kCalm), Events{});
    EXPECT_EQ(m.state(), CountdownState::grace);
}

TEST(MachineTable, GraceStepAtEndGoesIdleOrStartsAgain) {
    Countdown idle = counting();
    idle.cancel(at(1));
    EXPECT_EQ(idle.step(at(301), kCriticalDisabled), (Events{ev(CountdownEventKind::graceEnd)}));
    EXPECT_EQ(idle.state(), CountdownState::idle);

    Countdown again = counting();
    again.cancel(at(1));
    EXPECT_EQ(again.step(at(301), kCritical), (Events{ev(CountdownEventKind::graceEnd),
                                                      ev(CountdownEventKind::countdownStart, 10)}));
    EXPECT_EQ(again.state(), CountdownState::countdown);
}

TEST(MachineTable, CooledComesBeforeGraceEnd) {
    Countdown m = counting();
    m.cancel(at(1));
    EXPECT_EQ(m.step(at(301), kCalm),
              (Events{ev(CountdownEventKind::cooled), ev(CountdownEventKind::graceEnd)}));
}

TEST(MachineTable, DoneStepStaysDone) {
    Countdown m = counting(true);
    m.step(at(5), kCritical);
    m.step(at(10), kCritical);
    EXPECT_EQ(m.step(at(11), kCritical), Events{});
    EXPECT_EQ(m.state(), CountdownState::done);
}

TEST(MachineTable, ResetFromAnyStateGoesIdle) {
    for (Countdown m : {counting(), fired(), counting(true)}) {
        m.cancel(at(11));
        m.reset();
        EXPECT_EQ(m.state(), CountdownState::idle);
        EXPECT_FALSE(m.lastStep().has_value());
        EXPECT_FALSE(m.cancelled());
    }
}

TEST(MachineTable, ResetKeepsDeadlineGraceAndLastCue) {
    Countdown m = counting();
    m.step(at(5), kCritical);
    m.cancel(at(6));
    m.reset();
    EXPECT_EQ(m.deadline(), at(10));
    EXPECT_EQ(m.graceUntil(), at(306));
    EXPECT_EQ(m.lastCue(), 5);
}

}  // namespace
}  // namespace velmora
