#include <gtest/gtest.h>

#include "engine/engine_scenario.hpp"

// A rehearsed emergency: it runs the real screens but never writes a marker or shuts down.
namespace velmora::testing {
namespace {

const std::string kSimStarted =
    "stage-c: SIMULATION started (4s Stage B lead-in + 10s countdown). NO shutdown will be run.";

class EngineSimulation : public EngineScenario {
  protected:
    void SetUp() override {
        writeConsent();
        sensor->reading = kNominal;
        start();
        takeLines();
    }
};

TEST_F(EngineSimulation, LeadInThenCountdownThenCompletionWithoutMarkerOrShutdown) {
    engine->startSim(at(0));
    EXPECT_EQ(takeLines(), (std::vector<std::string>{kSimStarted}));
    tickThrough(0, 3.75);
    EXPECT_TRUE(takeLines().empty());  // the lead-in
    EXPECT_TRUE(sounder->cues.empty());
    tickThrough(4, 14);
    EXPECT_EQ(takeLines(), (std::vector<std::string>{
                               "stage-c SIMULATION: event countdown-start remaining=10",
                               "stage-c SIMULATION: event cue remaining=5",
                               "stage-c SIMULATION: event cue remaining=3",
                               "stage-c SIMULATION: event cue remaining=2",
                               "stage-c SIMULATION: event cue remaining=1",
                               "stage-c SIMULATION: event sim-complete remaining=0",
                               "stage-c SIMULATION: complete. shutdown was NOT called.",
                           }));
    EXPECT_EQ(sounder->cues, (std::vector<std::string>{"urgent", "tick", "tick", "tick", "tick"}));
    EXPECT_EQ(engine->snapshot().sim->state(), CountdownState::done);
    EXPECT_EQ(engine->snapshot().real.state(), CountdownState::idle);
    EXPECT_EQ(shutdowner->shutdownCalls, 0);
    EXPECT_EQ(shutdowner->probeCalls, 0);
    EXPECT_EQ(engine->snapshot().shutdownCalls, 0);
    EXPECT_FALSE(markerExists());
    tickThrough(14.25, 60);
    EXPECT_TRUE(takeLines().empty());  // a finished rehearsal waits to be dismissed
    engine->dismissSim();
    EXPECT_EQ(takeLines(), (std::vector<std::string>{"stage-c SIMULATION: dismissed"}));
    EXPECT_FALSE(engine->simActive());
}

TEST_F(EngineSimulation, RealCountdownTakesOverARunningSimulationOnTheSameTick) {
    engine->startSim(at(0));
    tickThrough(0, 2);
    takeLines();
    sensor->reading = kCritical;
    const auto view = tickAt(2.25);
    EXPECT_EQ(takeLines(),
              (std::vector<std::string>{
                  "stage-c: event countdown-start remaining=10",
                  "stage-c: automation permission probe (countdown start)",
                  "stage-c: automation permission: granted",
                  stateLine("idle", "countdown",
                            "thermal=Critical ladder=108 level=EMERGENCY critical=true "
                            "enabled=true"),
                  "stage-c: SIMULATION stopped: real countdown took over",
              }));
    EXPECT_FALSE(engine->simActive());
    EXPECT_EQ(view["sim"], false);
    EXPECT_EQ(view["state"], "countdown");
}

TEST_F(EngineSimulation, SimulationCountingDownMutesTheStageBAlarm) {
    withdrawConsent();  // no consent: stage B only sounds the alarm
    sensor->reading = kCritical;
    tickAt(0);
    engine->startSim(at(5));
    tickThrough(5, 19);  // its countdown runs from 9 to 19, over the alarm's repeat at 15
    EXPECT_EQ(sounder->cues,
              (std::vector<std::string>{"alarm", "urgent", "tick", "tick", "tick", "tick"}));
    tickAt(19.25);  // the rehearsal is done: the overdue alarm sounds
    EXPECT_EQ(sounder->cues.back(), "alarm");
    EXPECT_EQ(engine->snapshot().lastEmergencyAlarm, at(19.25));
}

TEST_F(EngineSimulation, StartingAgainRestartsTheLeadIn) {
    engine->startSim(at(0));
    tickThrough(0, 6);
    engine->startSim(at(6));
    EXPECT_EQ(engine->snapshot().sim->state(), CountdownState::idle);
    EXPECT_EQ(engine->snapshot().simStart, at(6));
    EXPECT_EQ(tickAt(6.25)["lead"], true);
}

}  // namespace
}  // namespace velmora::testing
