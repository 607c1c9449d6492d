#include <gtest/gtest.h>

#include <chrono>
#include <filesystem>
#include <fstream>

#include "engine/engine_scenario.hpp"

// What follows the shutdown call: success, refusal, failure, silence, and answers that arrive
// after the engine is gone.
namespace velmora::testing {
namespace {

const std::string kDeniedText =
    "execution error: Not authorized to send Apple events to System Events. (-1743)";

class EngineShutdown : public EngineScenario {
  protected:
    void SetUp() override {
        writeConsent();
        sensor->reading = kCritical;
    }

    /// Starts the engine and runs the countdown up to and including the shutdown call at t=10.
    void countDownToTheCall() {
        start();
        tickThrough(0, 10);
        ASSERT_EQ(shutdowner->shutdownCalls, 1);
        takeLines();
        sounder->cues.clear();
    }
};

TEST_F(EngineShutdown, DeniedShutdownShowsThePermissionNoticeAndEntersGrace) {
    shutdowner->shutdownAnswer = Answer::now;
    shutdowner->shutdownResult = ShutdownError::denied(kDeniedText);
    countDownToTheCall();
    EXPECT_EQ(lines.at(lines.size() - 1),
              stateLine("countdown", "grace",
                        "thermal=Critical ladder=108 level=EMERGENCY critical=true "
                        "enabled=true"));
    EXPECT_EQ(lines.at(lines.size() - 2),
              "stage-c: ERROR shutdown failed: " + kDeniedText +
                  "; clearing marker; telling the user to shut down manually");
    EXPECT_EQ(engine->snapshot().permission, Engine::PermissionState::denied(kDeniedText));
    EXPECT_EQ(engine->snapshot().manual,
              (Engine::ManualFail{std::string(macosTexts.permissionMessage), true}));
    EXPECT_EQ(engine->snapshot().errorMessage, "Could not shut down: " + kDeniedText);
    EXPECT_EQ(engine->snapshot().real.state(), CountdownState::grace);
    EXPECT_EQ(engine->snapshot().real.graceLeft(at(10)).count(), 300);
    EXPECT_FALSE(engine->snapshot().firedAt.has_value());
    EXPECT_FALSE(markerExists());
    const auto view = engine->view(at(10));
    EXPECT_EQ(view["permState"], "denied");
    EXPECT_EQ(view["permMsg"], std::string(macosTexts.permissionMessage));
    EXPECT_EQ(view["manual"],
              (nlohmann::json{{"reason", macosTexts.permissionMessage}, {"perm", true}}));
}

TEST_F(EngineShutdown, RefusalArrivingLaterMeasuresGraceFromTheLatestTick) {
    shutdowner->shutdownResult = ShutdownError::denied(kDeniedText);
    countDownToTheCall();
    tickAt(10.25);
    tickAt(10.5);
    EXPECT_TRUE(markerExists());
    queue.runAll();  // the answer comes in between two ticks
    EXPECT_EQ(engine->snapshot().real.state(), CountdownState::grace);
    EXPECT_EQ(engine->snapshot().real.graceUntil(), at(310.5));
    EXPECT_EQ(sounder->cues, (std::vector<std::string>{"urgent"}));
    EXPECT_FALSE(markerExists());
}

TEST_F(EngineShutdown, OtherFailureNamesThePlatformError) {
    shutdowner->shutdownResult = ShutdownError::failed("osascript exit 1");
    countDownToTheCall();
    queue.runAll();
    EXPECT_EQ(engine->snapshot().manual,
              (Engine::ManualFail{"macOS reported an error: osascript exit 1", false}));
    EXPECT_EQ(engine->snapshot().permission,
              Engine::PermissionState::granted());  // as the countdown's probe left it
    EXPECT_EQ(engine->snapshot().errorMessage, "Could not shut down: osascript exit 1");
}

TEST_F(EngineShutdown, OtherFailureOnLinuxNamesLogind) {
    words = &linuxTexts;
    shutdowner->shutdownResult = ShutdownError::failed("org.freedesktop.DBus.Error.NoReply");
    countDownToTheCall();
    queue.runAll();
    EXPECT_EQ(engine->snapshot().manual->reason,
              "logind reported an error: org.freedesktop.DBus.Error.NoReply");
}

TEST_F(EngineShutdown, SuccessChangesNothing) {
    countDownToTheCall();
    queue.runAll();
    EXPECT_TRUE(takeLines().empty());
    EXPECT_EQ(engine->snapshot().real.state(), CountdownState::fired);
    EXPECT_TRUE(markerExists());
    EXPECT_FALSE(engine->snapshot().manual.has_value());
}

TEST_F(EngineShutdown, NoAnswerFor30SecondsTriggersTheFailsafe) {
    shutdowner->shutdownAnswer = Answer::never;
    countDownToTheCall();
    sensor->reading = kNominal;  // the machine stayed up and cooled
    tickThrough(10.25, 39.75);
    EXPECT_TRUE(takeLines().empty());
    EXPECT_TRUE(markerExists());
    tickAt(40);
    EXPECT_EQ(takeLines(), (std::vector<std::string>{
                               "stage-c: still running 30s after the shutdown call; assuming the "
                               "shutdown did not happen; clearing marker",
                           }));
    EXPECT_FALSE(markerExists());
    EXPECT_EQ(engine->snapshot().real.state(), CountdownState::idle);
    EXPECT_FALSE(engine->snapshot().real.lastStep().has_value());
    EXPECT_FALSE(engine->snapshot().firedAt.has_value());
    tickAt(40.25);  // the change of state shows on the next tick
    EXPECT_EQ(takeLines(),
              (std::vector<std::string>{stateLine(
                  "fired", "idle",
                  "thermal=Nominal ladder=55 level=NORMAL critical=false enabled=true")}));
    EXPECT_EQ(engine->snapshot().peak, 0);
}

TEST_F(EngineShutdown, StillCriticalAfterTheFailsafeStartsAFreshCountdown) {
    shutdowner->shutdownAnswer = Answer::never;
    countDownToTheCall();
    tickThrough(10.25, 40);
    tickAt(40.25);
    EXPECT_EQ(engine->snapshot().real.state(), CountdownState::countdown);
    EXPECT_EQ(engine->snapshot().real.deadline(), at(50.25));
    EXPECT_EQ(engine->snapshot().shutdownCalls, 1);
}

TEST_F(EngineShutdown, MarkerThatCannotBeWrittenDoesNotStopTheShutdown) {
    const auto blocker = tmp.path() / "blocker";
    std::ofstream(blocker) << "a regular file where the marker's folder should be";
    markerDir = blocker / "data";
    start();
    tickThrough(0, 10);
    const auto warning = lines.at(lines.size() - 3);
    EXPECT_TRUE(warning.starts_with("stage-c: WARNING could not write marker: ")) << warning;
    EXPECT_TRUE(warning.ends_with(" (shutting down anyway)")) << warning;
    EXPECT_EQ(lines.at(lines.size() - 2),
              "stage-c: countdown reached 0; calling the shutdown (osascript System Events)");
    EXPECT_EQ(shutdowner->shutdownCalls, 1);
}

TEST_F(EngineShutdown, AnswerAfterTheEngineIsGoneDoesNothing) {
    shutdowner->shutdownResult = ShutdownError::failed("too late");
    countDownToTheCall();
    ASSERT_EQ(queue.size(), 1U);
    engine.reset();
    queue.runAll();
    EXPECT_TRUE(takeLines().empty());
    EXPECT_TRUE(sounder->cues.empty());
}

TEST_F(EngineShutdown, ProbeAnswerAfterTheEngineIsGoneDoesNothing) {
    shutdowner->probeAnswer = Answer::later;
    start();
    engine->probePermission("launch", false);
    takeLines();
    engine.reset();
    queue.runAll();
    EXPECT_TRUE(takeLines().empty());
}

}  // namespace
}  // namespace velmora::testing
