#include <gtest/gtest.h>

#include <algorithm>
#include <filesystem>
#include <fstream>

#include "engine/engine_scenario.hpp"
#include "store/file_size_limit.hpp"
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
    engine->dismissPermission();
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
    EXPECT_EQ(engine->settingsInForce(), (Settings{true, true, "2027-01-15T08:00:03Z"}));
    EXPECT_FALSE(engine->snapshot().permissionDismissed);
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

TEST_F(EngineSettings, ConsentThatCannotBeSavedReturnsFalseLogsAndHoldsForTheRun) {
    blockTheDataDirectory();
    start();
    takeLines();
    EXPECT_FALSE(engine->consent(true, wallAt(1)));
    EXPECT_EQ(takeLines(),
              (std::vector<std::string>{
                  "stage-c: ERROR saving consent: " + saveError(),
                  "stage-c: the answer holds until quit: autoShutdown=true enabled=true",
                  "stage-c: automation permission probe (auto-shutdown turned on)",
                  "stage-c: automation permission: granted",
              }));
    EXPECT_NE(saveError(), "(saved)");
    EXPECT_EQ(engine->settingsInForce(), (Settings{true, true, "2027-01-15T08:00:01Z"}));
    EXPECT_EQ(shutdowner->probeCalls, 1);
}

TEST_F(EngineSettings, DeclineThatCannotBeSavedWinsOverTheConsentOnDisk) {
    writeConsent();
    start();
    {
        const NoFileGrowth diskRefusesWrites;
        EXPECT_FALSE(engine->consent(false, wallAt(1)));
    }
    settingsFileChanged();  // the old "yes" is read again
    sensor->reading = kCritical;
    tickThrough(1, 15);
    EXPECT_FALSE(engine->settingsInForce().enabled());
    EXPECT_EQ(engine->snapshot().real.state(), CountdownState::idle);
    EXPECT_EQ(shutdowner->shutdownCalls, 0);
    EXPECT_EQ(settingsJson()["autoShutdown"], true);
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
    EXPECT_TRUE(engine->settingsInForce().enabled());
}

TEST_F(EngineSettings, SetAutoThatCannotBeSavedReturnsFalseLogsAndHoldsForTheRun) {
    blockTheDataDirectory();
    start();
    takeLines();
    EXPECT_FALSE(engine->setAuto(false, wallAt(1)));
    EXPECT_EQ(takeLines(), (std::vector<std::string>{
                               "stage-c: ERROR saving setting: " + saveError(),
                               "stage-c: the answer holds until quit: autoShutdown=false "
                               "enabled=false",
                           }));
    EXPECT_EQ(engine->settingsInForce(), (Settings{false, true, "2027-01-15T08:00:01Z"}));
}

TEST_F(EngineSettings, ConsentWrittenByAnotherProcessStartsTheCountdownOnceTheFileIsRead) {
    start();
    sensor->reading = kCritical;
    tickAt(0);
    EXPECT_EQ(engine->snapshot().real.state(), CountdownState::idle);
    writeConsent();
    tickAt(0.25);
    EXPECT_EQ(engine->snapshot().real.state(), CountdownState::idle)
        << "a tick must not read the file";
    settingsFileChanged();
    takeLines();
    tickAt(0.5);
    EXPECT_EQ(engine->snapshot().real.state(), CountdownState::countdown);
    EXPECT_EQ(takeLines().front(),
              "stage-c: settings changed: autoShutdown=true consentRecorded=true enabled=true");
    EXPECT_EQ(engine->view(at(0.5))["consentNeeded"], false);
}

TEST_F(EngineSettings, SwitchTurnedOffByAnotherProcessAbortsTheCountdown) {
    writeConsent();
    start();
    sensor->reading = kCritical;
    tickThrough(0, 2);
    writeConsent(false);
    settingsFileChanged();
    takeLines();
    tickAt(2.25);
    EXPECT_EQ(takeLines(),
              (std::vector<std::string>{
                  "stage-c: settings changed: autoShutdown=false consentRecorded=true "
                  "enabled=false",
                  "stage-c: event abort remaining=0",
                  stateLine("countdown", "idle",
                            "thermal=Critical ladder=108 level=EMERGENCY critical=true "
                            "enabled=false"),
              }));
}

TEST_F(EngineSettings, SettingsFileSpoiledMidRunKeepsTheLastGoodSettingsAndSaysSoOnce) {
    writeConsent();
    start();
    sensor->reading = kCritical;
    tickThrough(0, 2);
    writeSettingsText("{ not json");
    settingsFileChanged();
    takeLines();
    tickAt(2.25);
    settingsFileChanged();
    const auto view = tickThrough(2.5, 10);
    EXPECT_EQ(engine->settingsInForce(), (Settings{true, true, "2027-01-14T09:30:00Z"}));
    EXPECT_EQ(view["autoEnabled"], true);
    EXPECT_EQ(engine->snapshot().shutdownCalls, 1);
    const auto problemLines =
        std::count_if(lines.begin(), lines.end(), [](const std::string& line) {
            return line.find("does not hold valid settings") != std::string::npos;
        });
    EXPECT_EQ(problemLines, 1);
    EXPECT_EQ(takeLines().front(), "stage-c: settings file " + settingsPath().string() +
                                       " could not be read or does not hold valid settings; "
                                       "keeping autoShutdown=true consentRecorded=true");
}

TEST_F(EngineSettings, SettingsFileDeletedWithItsFolderKeepsTheLastGoodSettings) {
    writeConsent();
    start();
    sensor->reading = kCritical;
    tickThrough(0, 2);
    std::filesystem::remove_all(dataDir);
    settingsFileChanged();
    takeLines();
    tickThrough(2.25, 10);
    EXPECT_TRUE(engine->settingsInForce().enabled());
    EXPECT_EQ(engine->snapshot().shutdownCalls, 1);
    EXPECT_EQ(takeLines().front(), "stage-c: settings file " + settingsPath().string() +
                                       " is missing; keeping autoShutdown=true "
                                       "consentRecorded=true");
}

TEST_F(EngineSettings, SettingsFileReadableAgainIsTakenAndSaidSo) {
    writeConsent();
    start();
    writeSettingsText("");
    settingsFileChanged();
    tickAt(0);
    writeConsent(false);
    settingsFileChanged();
    takeLines();
    tickAt(0.25);
    EXPECT_EQ(takeLines(), (std::vector<std::string>{
                               "stage-c: settings changed: autoShutdown=false consentRecorded=true "
                               "enabled=false",
                               "stage-c: settings file readable again",
                           }));
}

}  // namespace
}  // namespace velmora::testing
