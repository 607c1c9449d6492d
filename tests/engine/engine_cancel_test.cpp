#include <gtest/gtest.h>

#include "engine/engine_scenario.hpp"
#include "engine/engine_test_access.hpp"

// Cancel, and starting or dismissing a rehearsal, in every state of the real countdown.
namespace velmora::testing {
namespace {

const std::string kCriticalEnabled =
    "thermal=Critical ladder=108 level=EMERGENCY critical=true enabled=true";

class EngineCancel : public EngineScenario {
  protected:
    void SetUp() override {
        writeConsent();
        sensor->reading = kCritical;
        start();
    }

    void fire() {
        tickThrough(0, 10);
        ASSERT_EQ(engine->snapshot().real.state(), CountdownState::fired);
        takeLines();
    }
};

TEST_F(EngineCancel, CancelAt3SecondsLeftEntersGraceAndCountsDownAgainAfterIt) {
    tickThrough(0, 7);
    writeMarkerText("left behind");
    takeLines();
    sounder->cues.clear();
    engine->cancel(at(7));
    EXPECT_EQ(takeLines(), (std::vector<std::string>{
                               "stage-c: user pressed Keep working · Cancel during the countdown",
                               "stage-c: cancelled before the shutdown ran; grace 300s",
                           }));
    EXPECT_FALSE(markerExists());
    EXPECT_EQ(engine->snapshot().real.state(), CountdownState::grace);
    EXPECT_EQ(engine->view(at(7))["graceSecs"], 300);
    EXPECT_TRUE(sounder->cues.empty());  // the machine's cancel event is not acted on
    tickAt(7.25);
    EXPECT_EQ(takeLines(),
              (std::vector<std::string>{stateLine("countdown", "grace", kCriticalEnabled)}));
    tickThrough(8.25, 305.25, 1);
    tickAt(306.75);
    EXPECT_TRUE(takeLines().empty());
    EXPECT_EQ(shutdowner->shutdownCalls, 0);
    EXPECT_EQ(sounder->cues.size(), 20U);  // stage B holds: the alarm every 15 s of grace
    tickAt(307);
    EXPECT_EQ(takeLines(), (std::vector<std::string>{
                               "stage-c: event grace-end remaining=0",
                               "stage-c: event countdown-start remaining=10",
                               "stage-c: automation permission probe (countdown start)",
                               "stage-c: automation permission: granted",
                               stateLine("grace", "countdown", kCriticalEnabled),
                           }));
    EXPECT_EQ(engine->snapshot().real.deadline(), at(317));
}

TEST_F(EngineCancel, CancelWithASimulationPresentStopsOnlyTheSimulation) {
    tickThrough(0, 3);
    // A tick never lets both run; the page's cancel may still race a takeover.
    EngineTestAccess::addRehearsal(*engine);
    takeLines();
    engine->cancel(at(3.1));
    EXPECT_EQ(takeLines(),
              (std::vector<std::string>{"stage-c SIMULATION: cancelled/stopped by user"}));
    EXPECT_FALSE(engine->simActive());
    EXPECT_EQ(engine->snapshot().real.state(), CountdownState::countdown);
    EXPECT_EQ(engine->snapshot().real.deadline(), at(10));
}

TEST_F(EngineCancel, CancelAfterTheShutdownCallIsRefused) {
    fire();
    engine->cancel(at(10.1));
    EXPECT_EQ(takeLines(), (std::vector<std::string>{
                               "stage-c: cancel refused: the shutdown call already ran (no way to "
                               "abort on macOS)",
                           }));
    EXPECT_EQ(engine->snapshot().errorMessage,
              "Too late to cancel: your Mac is already shutting down.");
    EXPECT_EQ(engine->snapshot().real.state(), CountdownState::fired);
    EXPECT_TRUE(markerExists());
    EXPECT_EQ(engine->view(at(10.1))["err"], engine->snapshot().errorMessage);
}

TEST_F(EngineCancel, CancelAfterTheShutdownCallOnLinuxNamesThisComputer) {
    words = &linuxTexts;
    start();
    fire();
    engine->cancel(at(10.1));
    EXPECT_EQ(takeLines(), (std::vector<std::string>{std::string(linuxTexts.cancelRefusedLog)}));
    EXPECT_EQ(engine->snapshot().errorMessage,
              "Too late to cancel: this computer is already shutting down.");
}

TEST_F(EngineCancel, CancelWhenIdleOrInGraceIsIgnored) {
    sensor->reading = kNominal;
    tickAt(0);
    takeLines();
    engine->cancel(at(0));
    sensor->reading = kCritical;
    tickAt(1);
    engine->cancel(at(2));
    takeLines();
    engine->cancel(at(3));
    EXPECT_EQ(lines.at(lines.size() - 1), "stage-c: cancel ignored (state grace)");
    EXPECT_EQ(std::count(lines.begin(), lines.end(), "stage-c: cancel ignored (state idle)"), 1);
    EXPECT_EQ(engine->snapshot().real.graceUntil(), at(302));
}

TEST_F(EngineCancel, StartSimDuringARealCountdownIsRefused) {
    tickAt(0);
    takeLines();
    engine->startSim(at(1));
    EXPECT_EQ(
        takeLines(),
        (std::vector<std::string>{"stage-c: SIMULATION refused: a real countdown is active"}));
    EXPECT_FALSE(engine->simActive());
}

TEST_F(EngineCancel, StartSimAfterTheShutdownCallIsRefused) {
    fire();
    engine->startSim(at(11));
    EXPECT_EQ(
        takeLines(),
        (std::vector<std::string>{"stage-c: SIMULATION refused: a real countdown is active"}));
    EXPECT_FALSE(engine->simActive());
}

TEST_F(EngineCancel, StartSimDuringGraceIsAccepted) {
    tickAt(0);
    engine->cancel(at(1));
    takeLines();
    engine->startSim(at(2));
    EXPECT_EQ(takeLines().back(),
              "stage-c: SIMULATION started (4s Stage B lead-in + 10s countdown). NO shutdown "
              "will be run.");
    EXPECT_TRUE(engine->simActive());
    EXPECT_EQ(engine->snapshot().simStart, at(2));
}

TEST_F(EngineCancel, StartSimWhenIdleIsAccepted) {
    sensor->reading = kNominal;
    tickAt(0);
    engine->startSim(at(0.5));
    EXPECT_TRUE(engine->simActive());
    EXPECT_EQ(engine->snapshot().sim->config(), CountdownConfig::production());
    EXPECT_TRUE(engine->snapshot().sim->simulated());
}

TEST_F(EngineCancel, DismissSimDuringARunningSimulationDoesNothing) {
    sensor->reading = kNominal;
    engine->startSim(at(0));
    tickThrough(0, 5);
    takeLines();
    engine->dismissSim();
    EXPECT_TRUE(takeLines().empty());
    ASSERT_TRUE(engine->simActive());
    EXPECT_EQ(engine->snapshot().sim->state(), CountdownState::countdown);
}

TEST_F(EngineCancel, DismissSimWithoutASimulationDoesNothing) {
    takeLines();
    engine->dismissSim();
    EXPECT_TRUE(takeLines().empty());
}

}  // namespace
}  // namespace velmora::testing
