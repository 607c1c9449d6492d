// The countdown machine's transition table, one test per row.
#include <gtest/gtest.h>

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
using Events = std::vector<CEvent>;

Machine counting(bool sim = false, CConfig cfg = CConfig::production()) {
    Machine m(cfg, sim);
    m.step(at(0), kCritical);
    return m;
}

Machine fired(CConfig cfg = CConfig::production()) {
    Machine m = counting(false, cfg);
    m.step(at(5), kCritical);
    m.step(at(10), kCritical);
    return m;
}

TEST(MachineTable, IdleStepEnabledAndCriticalStartsCountdown) {
    Machine m(CConfig::production(), false);
    EXPECT_EQ(m.step(at(0), kCritical), (Events{ev(CEventKind::countdownStart, 10)}));
    EXPECT_EQ(m.state, CState::countdown);
}

TEST(MachineTable, IdleStepOtherwiseStaysIdle) {
    Machine m(CConfig::production(), false);
    EXPECT_EQ(m.step(at(0), kCriticalDisabled), Events{});
    EXPECT_EQ(m.step(at(1), kWarmNotCalm), Events{});
    EXPECT_EQ(m.state, CState::idle);
}

TEST(MachineTable, CountdownStepWithoutEmergencyAborts) {
    Machine m = counting();
    EXPECT_EQ(m.step(at(1), kWarmNotCalm), (Events{ev(CEventKind::abort)}));
    EXPECT_EQ(m.state, CState::idle);
}

TEST(MachineTable, CountdownStepWhenDisabledAborts) {
    Machine m = counting();
    EXPECT_EQ(m.step(at(1), kCriticalDisabled), (Events{ev(CEventKind::abort)}));
    EXPECT_EQ(m.state, CState::idle);
}

TEST(MachineTable, CountdownStaleGapRestarts) {
    Machine m = counting();
    EXPECT_EQ(m.step(at(6), kCritical),
              (Events{ev(CEventKind::stale), ev(CEventKind::countdownStart, 10)}));
    EXPECT_EQ(m.state, CState::countdown);
}

TEST(MachineTable, CountdownDeadlineRealFires) {
    Machine m = counting();
    m.step(at(5), kCritical);
    EXPECT_EQ(m.step(at(10), kCritical), (Events{ev(CEventKind::fire)}));
    EXPECT_EQ(m.state, CState::fired);
}

TEST(MachineTable, CountdownDeadlineSimulationCompletes) {
    Machine m = counting(true);
    m.step(at(5), kCritical);
    EXPECT_EQ(m.step(at(10), kCritical), (Events{ev(CEventKind::simComplete)}));
    EXPECT_EQ(m.state, CState::done);
}

TEST(MachineTable, CountdownBeforeDeadlineCuesOnlyWhenACueSecondPassed) {
    Machine m = counting();
    EXPECT_EQ(m.step(at(1), kCritical), Events{});
    EXPECT_EQ(m.step(at(5), kCritical), (Events{ev(CEventKind::cue, 5)}));
    EXPECT_EQ(m.step(at(5.5), kCritical), Events{});
    EXPECT_EQ(m.state, CState::countdown);
}

TEST(MachineTable, CountdownCancelEntersGrace) {
    Machine m = counting();
    EXPECT_EQ(m.cancel(at(2)), (Events{ev(CEventKind::cancel)}));
    EXPECT_EQ(m.state, CState::grace);
    EXPECT_TRUE(m.cancelled);
    EXPECT_EQ(m.graceUntil, at(302));
}

TEST(MachineTable, FiredStepStaysFired) {
    Machine m = fired();
    EXPECT_EQ(m.step(at(11), kCritical), Events{});
    EXPECT_EQ(m.step(at(40), kCalm), Events{});
    EXPECT_EQ(m.state, CState::fired);
}

TEST(MachineTable, FiredCancelWithFiredCancelOnEntersGrace) {
    Machine m = fired(CConfig{10, 300, 5, true});
    EXPECT_EQ(m.cancel(at(11)), (Events{ev(CEventKind::cancel)}));
    EXPECT_EQ(m.state, CState::grace);
}

TEST(MachineTable, FiredCancelWithFiredCancelOffIsRefused) {
    Machine m = fired();
    EXPECT_EQ(m.cancel(at(11)), Events{});
    EXPECT_EQ(m.state, CState::fired);
}

TEST(MachineTable, FiredShutdownFailedEntersGraceWithoutCancel) {
    Machine m = fired();
    m.shutdownFailed(at(12));
    EXPECT_EQ(m.state, CState::grace);
    EXPECT_EQ(m.graceUntil, at(312));
    EXPECT_FALSE(m.cancelled);
    EXPECT_EQ(m.step(at(13), kCalm), Events{});  // no cooled without a cancel
}

TEST(MachineTable, ShutdownFailedOutsideFiredDoesNothing) {
    Machine m = counting();
    m.shutdownFailed(at(1));
    EXPECT_EQ(m.state, CState::countdown);
}

TEST(MachineTable, GraceStepBeforeEndStaysInGrace) {
    Machine m = counting();
    m.cancel(at(1));
    EXPECT_EQ(m.step(at(2), kCritical), Events{});
    EXPECT_EQ(m.step(at(3), kCalm), (Events{ev(CEventKind::cooled)}));
    EXPECT_EQ(m.step(at(4), kCalm), Events{});
    EXPECT_EQ(m.state, CState::grace);
}

TEST(MachineTable, GraceStepAtEndGoesIdleOrStartsAgain) {
    Machine idle = counting();
    idle.cancel(at(1));
    EXPECT_EQ(idle.step(at(301), kCriticalDisabled), (Events{ev(CEventKind::graceEnd)}));
    EXPECT_EQ(idle.state, CState::idle);

    Machine again = counting();
    again.cancel(at(1));
    EXPECT_EQ(again.step(at(301), kCritical),
              (Events{ev(CEventKind::graceEnd), ev(CEventKind::countdownStart, 10)}));
    EXPECT_EQ(again.state, CState::countdown);
}

TEST(MachineTable, CooledComesBeforeGraceEnd) {
    Machine m = counting();
    m.cancel(at(1));
    EXPECT_EQ(m.step(at(301), kCalm), (Events{ev(CEventKind::cooled), ev(CEventKind::graceEnd)}));
}

TEST(MachineTable, DoneStepStaysDone) {
    Machine m = counting(true);
    m.step(at(5), kCritical);
    m.step(at(10), kCritical);
    EXPECT_EQ(m.step(at(11), kCritical), Events{});
    EXPECT_EQ(m.state, CState::done);
}

TEST(MachineTable, ResetFromAnyStateGoesIdle) {
    for (Machine m : {counting(), fired(), counting(true)}) {
        m.cancel(at(11));
        m.reset();
        EXPECT_EQ(m.state, CState::idle);
        EXPECT_FALSE(m.last.has_value());
        EXPECT_FALSE(m.cancelled);
    }
}

TEST(MachineTable, ResetKeepsDeadlineGraceAndLastCue) {
    Machine m = counting();
    m.step(at(5), kCritical);
    m.cancel(at(6));
    m.reset();
    EXPECT_EQ(m.deadline, at(10));
    EXPECT_EQ(m.graceUntil, at(306));
    EXPECT_EQ(m.lastCue, 5);
}

}  // namespace
}  // namespace velmora
