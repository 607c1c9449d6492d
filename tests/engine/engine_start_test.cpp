#include <gtest/gtest.h>

#include "engine/engine_scenario.hpp"

namespace velmora::testing {
namespace {

using EngineStart = EngineScenario;

TEST_F(EngineStart, WithoutASettingsFileLogsTheDefaultsAndTheThresholds) {
    start();
    EXPECT_EQ(takeLines(), (std::vector<std::string>{
                               "stage-c: settings loaded: autoShutdown=true consentRecorded=false "
                               "enabled=false",
                               "stage-c: thresholds: stageA=95C stageB=100C (countdown starts "
                               "immediately at B; timed A->B promotion OFF: only the OS critical "
                               "state reaches B) countdown=10s grace=300s; shutdown runs at the "
                               "END of the countdown (osascript System Events)",
                           }));
    EXPECT_EQ(engine->settingsInForce(), Settings{});
    EXPECT_FALSE(std::filesystem::exists(settingsPath()));  // reading never creates the file
    EXPECT_FALSE(engine->snapshot().relief.has_value());
    EXPECT_EQ(engine->snapshot().permission, Engine::PermissionState::unknown());
    EXPECT_EQ(engine->snapshot().real.state(), CountdownState::idle);
    EXPECT_FALSE(engine->simActive());
    EXPECT_EQ(engine->snapshot().lastNow, at(0));
}

TEST_F(EngineStart, WithConsentRecordedLogsEnabled) {
    writeConsent();
    start();
    EXPECT_EQ(takeLines().front(),
              "stage-c: settings loaded: autoShutdown=true consentRecorded=true enabled=true");
    EXPECT_EQ(engine->settingsInForce().consentAt, "2027-01-14T09:30:00Z");
}

TEST_F(EngineStart, AutoShutdownOffWithConsentIsNotEnabled) {
    writeConsent(false);
    start();
    EXPECT_EQ(takeLines().front(),
              "stage-c: settings loaded: autoShutdown=false consentRecorded=true enabled=false");
}

TEST_F(EngineStart, GarbledSettingsFileFallsBackToTheDefaults) {
    writeSettingsText("{\"autoShutdown\": false}");  // "consentRecorded" missing
    start();
    EXPECT_EQ(takeLines().front(), settingsLoadedLine(true, false));
    EXPECT_EQ(engine->settingsInForce(), Settings{});
}

TEST_F(EngineStart, TimedPromotionIsNamedInTheThresholdsLine) {
    promoteSustainedExtreme = true;
    start();
    EXPECT_EQ(takeLines().at(1),
              "stage-c: thresholds: stageA=95C stageB=100C (countdown starts immediately at B; "
              "timed A->B promotion ON) countdown=10s grace=300s; shutdown runs at the END of "
              "the countdown (osascript System Events)");
}

TEST_F(EngineStart, LinuxWordingNamesLogind) {
    words = &linuxTexts;
    start();
    EXPECT_EQ(takeLines().at(1), thresholdsLine(linuxTexts));
    EXPECT_NE(lines.at(1).find("(logind PowerOff)"), std::string::npos);
}

TEST_F(EngineStart, MarkerFoundAtLaunchBecomesReliefAndIsCleared) {
    writeMarkerText(
        R"({"at":"2027-01-15T07:59:00Z","peakC":108,"reason":"emergency countdown reached 0"})");
    start();
    EXPECT_EQ(takeLines().at(2),
              "stage-c: marker found at launch (shutdown at 2027-01-15T07:59:00Z, peak ladder "
              "108); showing relief; marker cleared");
    EXPECT_FALSE(markerExists());
    EXPECT_EQ(engine->snapshot().relief, (Relief{108, false}));
    const auto view = engine->view(at(0));
    EXPECT_EQ(view["relief"], (nlohmann::json{{"peak", "Critical"}, {"cancelled", false}}));
}

TEST_F(EngineStart, UnreadableMarkerIsLoggedAndClearedWithoutRelief) {
    writeMarkerText("not json");
    start();
    EXPECT_EQ(takeLines().at(2), "stage-c: marker found at launch but not usable (" +
                                     markerPath().string() +
                                     " is not a marker: 8 bytes beginning 'not json'); no relief "
                                     "shown; marker cleared");
    EXPECT_FALSE(markerExists());
    EXPECT_FALSE(engine->snapshot().relief.has_value());
    EXPECT_FALSE(engine->view(at(0)).contains("relief"));
}

TEST_F(EngineStart, EmptyMarkerFromAKilledWriteGivesNoRelief) {
    writeMarkerText("");
    start();
    EXPECT_NE(takeLines().at(2).find("is not a marker: 0 bytes); no relief shown"),
              std::string::npos);
    EXPECT_FALSE(engine->snapshot().relief.has_value());
}

TEST_F(EngineStart, NoMarkerMeansNoReliefLine) {
    start();
    EXPECT_EQ(takeLines().size(), 2U);
    EXPECT_FALSE(engine->view(at(0)).contains("relief"));
}

}  // namespace
}  // namespace velmora::testing
