#include <gtest/gtest.h>

#include <fstream>

#include "engine/engine_scenario.hpp"
#include "store/settings_store.hpp"

// Consent, the auto-shutdown switch, and a settings file that changes or cannot be written.
namespace velmora::testing {
namespace {

class EngineSettings : public EngineScenario {
  protected:
    /// Points the data directory below a regular file, where nothing can be created.
    void blockTheDataDirectory() {
        const auto blocker = tmp.path() / "blocker";
        std::ofstream(blocker) << "not a folder";
        dataDir = blocker / "data";
    }

    /// The message the settings store gives for a save into the current data directory.
    std::string saveError() const {
        const auto error = SettingsStore(dataDir).save(Settings{});
        return error ? error->message : "(saved)";
    }
};

TEST_F(EngineSettings, ConsentOnSavesTheAnswerAndProbesThePermission) {
    start();
    engine->dismissPerm();
    takeLines();
    EXPECT_TRUE(engine->consent(true, wallAt(3.7)));
    EXPECT_EQ(takeLines(), (std::vector<std::string>{
                               "stage-c: consent recorded: autoShutdown=true",
                               "stage-c: automation permission probe (auto-shutdown turned on)",
                               "stage-c: automation permission: granted",
                           }));
    EXPECT_EQ(settingsJson(), (nlohmann::json{{"autoShutdown", true},
                                              {"consentAt", "2027-01-15T08:00:03Z"},
                                              {"consentRecorded", true}}));
    EXPECT_EQ(engine->set, (Settings{true, true, "2027-01-15T08:00:03Z"}));
    EXPECT_FALSE(engine->permDismissed);
    EXPECT_EQ(engine->view(at(4))["consentNeeded"], false);
}

TEST_F(EngineSettings, ConsentOffSavesWithoutAProbe) {
    start();
    takeLines();
    EXPECT_TRUE(engine->consent(false, wallAt(1)));
    EXPECT_EQ(takeLines(),
              (std::vector<std::string>{"stage-c: consent recorded: autoShutdown=false"}));
    EXPECT_EQ(settingsJson()["autoShutdown"], false);
    EXPECT_EQ(settingsJson()["consentRecorded"], true);
    EXPECT_EQ(shutdowner->probeCalls, 0);
}

TEST_F(EngineSettings, ConsentThatCannotBeSavedReturnsFalseAndLogs) {
    blockTheDataDirectory();
    start();
    takeLines();
    const Settings before = engine->set;
    EXPECT_FALSE(engine->consent(true, wallAt(1)));
    EXPECT_EQ(takeLines(),
              (std::vector<std::string>{"stage-c: ERROR saving consent: " + saveError()}));
    EXPECT_NE(saveError(), "(saved)");
    EXPECT_EQ(engine->set, before);
    EXPECT_EQ(shutdowner->probeCalls, 0);
}

TEST_F(EngineSettings, SetAutoOffOnAFreshInstallRecordsConsentWithoutAProbe) {
    start();
    takeLines();
    EXPECT_TRUE(engine->setAuto(false, wallAt(2)));
    EXPECT_EQ(takeLines(), (std::vector<std::string>{
                               "stage-c: setting 'Auto-shutdown in emergency' = false "
                               "(consentRecorded=true)",
                           }));
    EXPECT_EQ(settingsJson(), (nlohmann::json{{"autoShutdown", false},
                                              {"consentAt", "2027-01-15T08:00:02Z"},
                                              {"consentRecorded", true}}));
    EXPECT_EQ(shutdowner->probeCalls, 0);
    EXPECT_EQ(engine->view(at(2))["autoEnabled"], false);
}

TEST_F(EngineSettings, SetAutoOnKeepsTheFirstConsentTimeAndProbes) {
    writeConsent(false);
    start();
    takeLines();
    EXPECT_TRUE(engine->setAuto(true, wallAt(60)));
    EXPECT_EQ(takeLines(), (std::vector<std::string>{
                               "stage-c: setting 'Auto-shutdown in emergency' = true "
                               "(consentRecorded=true)",
                               "stage-c: automation permission probe (auto-shutdown turned on)",
                               "stage-c: automation permission: granted",
                           }));
    EXPECT_EQ(settingsJson()["consentAt"], "2027-01-14T09:30:00Z");
    EXPECT_TRUE(engine->set.enabled());
}

TEST_F(EngineSettings, SetAutoThatCannotBeSavedReturnsFalseAndLogs) {
    blockTheDataDirectory();
    start();
    takeLines();
    EXPECT_FALSE(engine->setAuto(true, wallAt(1)));
    EXPECT_EQ(takeLines(),
              (std::vector<std::string>{"stage-c: ERROR saving setting: " + saveError()}));
    EXPECT_EQ(engine->set, Settings{});
}

TEST_F(EngineSettings, ConsentWrittenByAnotherProcessStartsTheCountdownOnTheNextTick) {
    start();
    sensor->reading = kCritical;
    tickAt(0);
    EXPECT_EQ(engine->real.state, CState::idle);
    writeConsent();
    tickAt(0.25);
    EXPECT_EQ(engine->real.state, CState::countdown);
    EXPECT_EQ(engine->view(at(0.25))["consentNeeded"], false);
}

TEST_F(EngineSettings, SwitchTurnedOffByAnotherProcessAbortsTheCountdown) {
    writeConsent();
    start();
    sensor->reading = kCritical;
    tickThrough(0, 2);
    writeConsent(false);
    takeLines();
    tickAt(2.25);
    EXPECT_EQ(takeLines(),
              (std::vector<std::string>{
                  "stage-c: event abort remaining=0",
                  stateLine("countdown", "idle",
                            "thermal=Critical ladder=108 level=EMERGENCY critical=true "
                            "enabled=false"),
              }));
}

TEST_F(EngineSettings, SettingsFileSpoiledMidRunFallsBackToTheDefaults) {
    writeConsent();
    start();
    writeSettingsText("{ not json");
    const auto view = tickAt(0);
    EXPECT_EQ(engine->set, Settings{});
    EXPECT_EQ(view["autoShutdown"], true);
    EXPECT_EQ(view["consentNeeded"], true);
    EXPECT_EQ(view["autoEnabled"], false);
}

}  // namespace
}  // namespace velmora::testing
