#include <gtest/gtest.h>

#include "engine/engine_scenario.hpp"

// The permission probe and the notices: relief, manual shutdown, permission.
namespace velmora::testing {
namespace {

class EngineNotices : public EngineScenario {
  protected:
    void SetUp() override {
        start();
        takeLines();
    }
};

TEST_F(EngineNotices, TwoProbeRequestsInARowRunOneProbe) {
    shutdowner->probeAnswer = Answer::later;
    engine->probePermission("launch", false);
    engine->probePermission("user pressed Check again", true);
    EXPECT_EQ(takeLines(),
              (std::vector<std::string>{"stage-c: automation permission probe (launch)"}));
    EXPECT_EQ(shutdowner->probeCalls, 1);
    EXPECT_TRUE(engine->snapshot().probing);
    queue.runAll();
    EXPECT_FALSE(engine->snapshot().probing);
    EXPECT_EQ(takeLines(), (std::vector<std::string>{"stage-c: automation permission: granted"}));
    engine->probePermission("user pressed Check again", true);  // the next one runs again
    EXPECT_EQ(shutdowner->probeCalls, 2);
}

TEST_F(EngineNotices, AUserRequestShowsTheAnswerAgainEvenWhenOneIsRunning) {
    shutdowner->probeAnswer = Answer::later;
    engine->probePermission("launch", false);
    engine->dismissPermission();
    engine->probePermission("user pressed Check again", true);
    EXPECT_FALSE(engine->snapshot().permissionDismissed);
    EXPECT_EQ(shutdowner->probeCalls, 1);
}

TEST_F(EngineNotices, ProbeDeniedRecordsTheDetail) {
    shutdowner->probeResult = AutomationOutcome::denied("Not authorized (-1743)");
    engine->dismissPermission();
    engine->probePermission("launch", false);
    EXPECT_EQ(takeLines().back(),
              "stage-c: automation permission: DENIED (Not authorized (-1743))");
    EXPECT_EQ(engine->snapshot().permission,
              Engine::PermissionState::denied("Not authorized (-1743)"));
    EXPECT_TRUE(
        engine->snapshot().permissionDismissed);  // only a user request or a grant shows it again
    EXPECT_EQ(engine->permissionName(), "denied");
    EXPECT_EQ(engine->permissionText(), std::string(macosTexts.permissionMessage));
}

TEST_F(EngineNotices, ProbeFailedRecordsTheDetail) {
    shutdowner->probeResult =
        AutomationOutcome::failed("osascript timed out (no answer to the Automation prompt?)");
    engine->probePermission("launch", false);
    EXPECT_EQ(takeLines().back(),
              "stage-c: automation permission: probe failed (osascript timed out (no answer to "
              "the Automation prompt?))");
    EXPECT_EQ(engine->permissionName(), "failed");
    EXPECT_EQ(engine->permissionText(),
              "Could not check the Automation permission: osascript timed out (no answer to the "
              "Automation prompt?)");
}

TEST_F(EngineNotices, ProbeGrantedClearsTheDismissal) {
    engine->dismissPermission();
    engine->probePermission("launch", false);
    EXPECT_EQ(engine->snapshot().permission, Engine::PermissionState::granted());
    EXPECT_FALSE(engine->snapshot().permissionDismissed);
    EXPECT_EQ(engine->permissionName(), "granted");
    EXPECT_EQ(engine->permissionText(), "");
}

TEST_F(EngineNotices, DismissalsLogTheirLines) {
    // The relief notice of a launch after a shutdown, and the notice of a failed one.
    writeMarkerText(
        R"({"at":"2027-01-15T07:59:00Z","peakC":108,"reason":"emergency countdown reached 0"})");
    start();
    engine->userShutdownFailed(ShutdownError::failed("reason"));
    ASSERT_TRUE(engine->snapshot().relief.has_value());
    ASSERT_TRUE(engine->snapshot().manual.has_value());
    takeLines();
    engine->dismissRelief();
    engine->dismissManual();
    engine->dismissPermission();
    EXPECT_EQ(takeLines(), (std::vector<std::string>{
                               "stage-c: relief screen dismissed",
                               "stage-c: manual-shutdown notice dismissed",
                               "stage-c: permission notice dismissed for this run",
                           }));
    EXPECT_FALSE(engine->snapshot().relief.has_value());
    EXPECT_FALSE(engine->snapshot().manual.has_value());
    EXPECT_TRUE(engine->snapshot().permissionDismissed);
    EXPECT_EQ(engine->view(at(0))["permDismissed"], true);
}

TEST_F(EngineNotices, UserShutdownRefusedShowsThePermissionNotice) {
    engine->dismissPermission();
    engine->userShutdownFailed(ShutdownError::denied("Not authorized (-1743)"));
    EXPECT_EQ(takeLines().back(),
              "stage-c: ERROR user-initiated shutdown failed: Not authorized (-1743)");
    EXPECT_EQ(engine->snapshot().permission,
              Engine::PermissionState::denied("Not authorized (-1743)"));
    EXPECT_FALSE(engine->snapshot().permissionDismissed);
    EXPECT_EQ(engine->snapshot().manual,
              (Engine::ManualFail{std::string(macosTexts.permissionMessage), true}));
    EXPECT_EQ(engine->snapshot().errorMessage,
              "");  // only the engine's own shutdown sets the error text
}

TEST_F(EngineNotices, UserShutdownFailedNamesThePlatformError) {
    engine->userShutdownFailed(ShutdownError::failed("osascript exit 1"));
    EXPECT_EQ(engine->snapshot().manual,
              (Engine::ManualFail{"macOS reported an error: osascript exit 1", false}));
    EXPECT_EQ(engine->snapshot().permission, Engine::PermissionState::unknown());
}

TEST_F(EngineNotices, ManualNoticeClearsOnceNoLongerCritical) {
    engine->userShutdownFailed(ShutdownError::denied("reason"));
    ASSERT_TRUE(engine->snapshot().manual.has_value());
    takeLines();
    sensor->reading = kCritical;
    tickAt(0);
    EXPECT_TRUE(engine->snapshot().manual.has_value());
    sensor->reading = kSerious;
    tickAt(1);
    EXPECT_EQ(
        takeLines(),
        (std::vector<std::string>{"stage-c: manual-shutdown notice cleared (no longer critical)"}));
    EXPECT_FALSE(engine->snapshot().manual.has_value());
}

TEST_F(EngineNotices, ManualNoticeAndErrorClearWhenANewCountdownStarts) {
    writeConsent();
    settingsFileChanged();
    // A countdown whose shutdown failed: the notice, the error, and grace until t=310.
    shutdowner->shutdownAnswer = Answer::now;
    shutdowner->shutdownResult = ShutdownError::failed("x");
    sensor->reading = kCritical;
    tickThrough(0, 10);
    ASSERT_TRUE(engine->snapshot().manual.has_value());
    ASSERT_EQ(engine->snapshot().errorMessage, "Could not shut down: x");
    tickAt(310);
    ASSERT_EQ(engine->snapshot().real.state(), CountdownState::countdown);
    EXPECT_FALSE(engine->snapshot().manual.has_value());
    EXPECT_EQ(engine->snapshot().errorMessage, "");
}

}  // namespace
}  // namespace velmora::testing
