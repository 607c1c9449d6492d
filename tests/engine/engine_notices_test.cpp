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
    EXPECT_TRUE(engine->probing);
    queue.runAll();
    EXPECT_FALSE(engine->probing);
    EXPECT_EQ(takeLines(), (std::vector<std::string>{"stage-c: automation permission: granted"}));
    engine->probePermission("user pressed Check again", true);  // the next one runs again
    EXPECT_EQ(shutdowner->probeCalls, 2);
}

TEST_F(EngineNotices, AUserRequestShowsTheAnswerAgainEvenWhenOneIsRunning) {
    shutdowner->probeAnswer = Answer::later;
    engine->probePermission("launch", false);
    engine->dismissPermission();
    engine->probePermission("user pressed Check again", true);
    EXPECT_FALSE(engine->permissionDismissed);
    EXPECT_EQ(shutdowner->probeCalls, 1);
}

TEST_F(EngineNotices, ProbeDeniedRecordsTheDetail) {
    shutdowner->probeResult = AutomationOutcome::denied("Not authorized (-1743)");
    engine->dismissPermission();
    engine->probePermission("launch", false);
    EXPECT_EQ(takeLines().back(),
              "stage-c: automation permission: DENIED (Not authorized (-1743))");
    EXPECT_EQ(engine->permission, Engine::PermissionState::denied("Not authorized (-1743)"));
    EXPECT_TRUE(engine->permissionDismissed);  // only a user request or a grant shows it again
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
    EXPECT_EQ(engine->permission, Engine::PermissionState::granted());
    EXPECT_FALSE(engine->permissionDismissed);
    EXPECT_EQ(engine->permissionName(), "granted");
    EXPECT_EQ(engine->permissionText(), "");
}

TEST_F(EngineNotices, DismissalsLogTheirLines) {
    engine->relief = Relief{108, false};
    engine->manual = Engine::ManualFail{"reason", false};
    engine->dismissRelief();
    engine->dismissManual();
    engine->dismissPermission();
    EXPECT_EQ(takeLines(), (std::vector<std::string>{
                               "stage-c: relief screen dismissed",
                               "stage-c: manual-shutdown notice dismissed",
                               "stage-c: permission notice dismissed for this run",
                           }));
    EXPECT_FALSE(engine->relief.has_value());
    EXPECT_FALSE(engine->manual.has_value());
    EXPECT_TRUE(engine->permissionDismissed);
    EXPECT_EQ(engine->view(at(0))["permDismissed"], true);
}

TEST_F(EngineNotices, UserShutdownRefusedShowsThePermissionNotice) {
    engine->dismissPermission();
    engine->userShutdownFailed(ShutdownError::denied("Not authorized (-1743)"));
    EXPECT_EQ(takeLines().back(),
              "stage-c: ERROR user-initiated shutdown failed: Not authorized (-1743)");
    EXPECT_EQ(engine->permission, Engine::PermissionState::denied("Not authorized (-1743)"));
    EXPECT_FALSE(engine->permissionDismissed);
    EXPECT_EQ(engine->manual,
              (Engine::ManualFail{std::string(macosTexts.permissionMessage), true}));
    EXPECT_EQ(engine->errorMessage, "");  // only the engine's own shutdown sets the error text
}

TEST_F(EngineNotices, UserShutdownFailedNamesThePlatformError) {
    engine->userShutdownFailed(ShutdownError::failed("osascript exit 1"));
    EXPECT_EQ(engine->manual,
              (Engine::ManualFail{"macOS reported an error: osascript exit 1", false}));
    EXPECT_EQ(engine->permission, Engine::PermissionState::unknown());
}

TEST_F(EngineNotices, ManualNoticeClearsOnceNoLongerCritical) {
    engine->manual = Engine::ManualFail{"reason", true};
    sensor->reading = kCritical;
    tickAt(0);
    EXPECT_TRUE(engine->manual.has_value());
    sensor->reading = kSerious;
    tickAt(1);
    EXPECT_EQ(
        takeLines(),
        (std::vector<std::string>{"stage-c: manual-shutdown notice cleared (no longer critical)"}));
    EXPECT_FALSE(engine->manual.has_value());
}

TEST_F(EngineNotices, ManualNoticeAndErrorClearWhenANewCountdownStarts) {
    writeConsent();
    settingsFileChanged();
    engine->manual = Engine::ManualFail{"reason", true};
    engine->errorMessage = "Could not shut down: x";
    sensor->reading = kCritical;
    tickAt(0);
    EXPECT_FALSE(engine->manual.has_value());
    EXPECT_EQ(engine->errorMessage, "");
}

}  // namespace
}  // namespace velmora::testing
