#include <gtest/gtest.h>

#include <string>

#include "engine/engine_scenario.hpp"
#include "engine/engine_test_access.hpp"

// The stage page's dictionary: its keys, their types, and what they say in each situation.
namespace velmora::testing {
namespace {

class EngineView : public EngineScenario {
  protected:
    void SetUp() override {
        writeConsent();
        start();
    }
};

TEST_F(EngineView, AlwaysHoldsThe21KeysWithTheirTypes) {
    const auto view = tickAt(0);
    const std::vector<std::string> strings{"version",   "state",   "temp",
                                           "stage",     "nowTxt",  "err",
                                           "permState", "permMsg", "thermalNote"};
    const std::vector<std::string> integers{"remainingMs", "remaining", "totalSecs", "level",
                                            "graceSecs"};
    const std::vector<std::string> booleans{
        "sim", "simDone", "lead", "autoShutdown", "consentNeeded", "autoEnabled", "permDismissed"};
    for (const auto& key : strings)
        EXPECT_TRUE(view.at(key).is_string()) << key;
    for (const auto& key : integers)
        EXPECT_TRUE(view.at(key).is_number_integer()) << key;
    for (const auto& key : booleans)
        EXPECT_TRUE(view.at(key).is_boolean()) << key;
    EXPECT_EQ(view.size(), 21U);  // no optional keys without their notices
    EXPECT_EQ(view["version"], "1.1");
    EXPECT_EQ(view["totalSecs"], 10);
    EXPECT_EQ(view["thermalNote"], std::string(macosTexts.thermalNote));
}

TEST_F(EngineView, JsonKeepsIntegersAndBooleans) {
    sensor->reading = kCritical;
    const auto text = tickThrough(0, 0.25).dump();
    engine->cancel(at(0.3));
    const auto parsed = nlohmann::json::parse(engine->viewJson(at(0.5)));
    EXPECT_NE(text.find("\"remaining\":10,"), std::string::npos) << text;
    EXPECT_NE(text.find("\"remainingMs\":9750,"), std::string::npos) << text;
    EXPECT_NE(text.find("\"sim\":false"), std::string::npos) << text;
    EXPECT_EQ(parsed, engine->view(at(0.5)));
    EXPECT_TRUE(parsed["graceSecs"].is_number_integer());
    EXPECT_EQ(parsed["graceSecs"], 299);
}

TEST_F(EngineView, NoReadingSaysNotAvailable) {
    const auto view = tickAt(0);
    EXPECT_EQ(view["temp"], "n/a");
    EXPECT_EQ(view["level"], -1);
    EXPECT_EQ(view["stage"], "n/a");
    EXPECT_EQ(view["nowTxt"], "n/a");
    EXPECT_EQ(view["state"], "idle");
}

TEST_F(EngineView, SeriousReadingNamesBothWords) {
    sensor->reading = kSerious;
    const auto view = tickAt(0);
    EXPECT_EQ(view["temp"], "Serious");
    EXPECT_EQ(view["level"], 3);
    EXPECT_EQ(view["stage"], "EXTREME HEAT");
    EXPECT_EQ(view["nowTxt"], "Serious · EXTREME HEAT");
}

TEST_F(EngineView, CriticalCountdownCountsDownInSecondsAndMilliseconds) {
    sensor->reading = kCritical;
    for (int second = 0; second <= 9; ++second) {
        const auto view = tickAt(second);
        EXPECT_EQ(view["state"], "countdown");
        EXPECT_EQ(view["remaining"], 10 - second);
        EXPECT_EQ(view["remainingMs"], 10000 - 1000 * second);
        EXPECT_EQ(view["stage"], "EMERGENCY");
        EXPECT_EQ(view["temp"], "Critical");
        EXPECT_EQ(view["level"], 4);
    }
    EXPECT_EQ(tickAt(9.6)["remainingMs"], 400);
    EXPECT_EQ(tickAt(9.6)["remaining"], 1);
}

TEST_F(EngineView, CountdownKeepsNamingThePeakWhileTheReadingFalls) {
    sensor->reading = kCritical;
    tickAt(0);
    // The view reads only the last tick's results: as if the reading had just fallen.
    EngineTestAccess::setReading(*engine, kSerious, Level::extreme);
    const auto view = engine->view(at(1));
    EXPECT_EQ(view["state"], "countdown");
    EXPECT_EQ(view["temp"], "Critical");
    EXPECT_EQ(view["stage"], "EXTREME HEAT");
}

TEST_F(EngineView, AfterTheShutdownCallAFallingReadingStillShowsThePeak) {
    sensor->reading = kCritical;
    tickThrough(0, 10);
    sensor->reading = kSerious;
    const auto view = tickAt(10.25);
    EXPECT_EQ(view["state"], "fired");
    EXPECT_EQ(view["temp"], "Critical");
    EXPECT_EQ(view["stage"], "EXTREME HEAT");
    EXPECT_EQ(view["nowTxt"], "Serious · EXTREME HEAT");
}

TEST_F(EngineView, SimulationLeadInThenDoneAndReliefHidden) {
    writeMarkerText(
        R"({"at":"2027-01-15T07:59:00Z","peakC":108,"reason":"emergency countdown reached 0"})");
    start();  // a launch after a shutdown: the relief notice
    sensor->reading = kNominal;
    engine->startSim(at(0));
    auto view = tickAt(0.25);
    EXPECT_EQ(view["sim"], true);
    EXPECT_EQ(view["lead"], true);
    EXPECT_EQ(view["state"], "idle");
    EXPECT_EQ(view["stage"], "EMERGENCY");
    EXPECT_EQ(view["level"], 4);
    EXPECT_EQ(view["temp"], "Critical (simulated)");
    EXPECT_EQ(view["nowTxt"], "Nominal · NORMAL");
    EXPECT_FALSE(view.contains("relief"));
    EXPECT_EQ(tickAt(3.75)["lead"], true);
    view = tickAt(4);
    EXPECT_EQ(view["lead"], false);
    EXPECT_EQ(view["state"], "countdown");
    EXPECT_EQ(view["remaining"], 10);
    view = tickThrough(4.25, 14);
    EXPECT_EQ(view["simDone"], true);
    EXPECT_EQ(view["state"], "done");
    EXPECT_FALSE(view.contains("relief"));
    engine->dismissSim();
    EXPECT_EQ(engine->view(at(15))["relief"]["peak"], "Critical");
}

TEST_F(EngineView, AfterACancelGraceCountsDownInWholeSeconds) {
    sensor->reading = kCritical;
    tickAt(0);
    engine->cancel(at(1));
    EXPECT_EQ(engine->view(at(1))["state"], "grace");
    EXPECT_EQ(engine->view(at(1))["graceSecs"], 300);
    EXPECT_EQ(tickAt(1.25)["graceSecs"], 299);
    EXPECT_EQ(tickAt(61)["graceSecs"], 240);
    EXPECT_EQ(tickAt(61)["remaining"], 0);
    EXPECT_EQ(tickAt(61)["remainingMs"], 0);
}

TEST_F(EngineView, ReliefAfterCoolingSaysCancelled) {
    sensor->reading = kCritical;
    tickAt(0);
    engine->cancel(at(3));
    sensor->reading = kNominal;
    const auto view = tickAt(4);
    EXPECT_EQ(view["relief"], (nlohmann::json{{"peak", "Critical"}, {"cancelled", true}}));
    EXPECT_EQ(lines.at(lines.size() - 2), "stage-c: event cooled remaining=0");
}

TEST_F(EngineView, ReliefPeakNamesItsBand) {
    writeMarkerText(
        R"({"at":"2027-01-15T07:59:00Z","peakC":96.5,"reason":"emergency countdown reached 0"})");
    start();
    EXPECT_EQ(engine->view(at(0))["relief"]["peak"], "Serious");
    writeMarkerText(
        R"({"at":"2027-01-15T07:59:00Z","peakC":-3,"reason":"emergency countdown reached 0"})");
    start();
    EXPECT_EQ(engine->view(at(0))["relief"]["peak"], "n/a");
}

TEST_F(EngineView, ManualNoticeIsADictionary) {
    engine->userShutdownFailed(ShutdownError::failed("x"));
    const auto view = engine->view(at(0));
    EXPECT_EQ(view["manual"],
              (nlohmann::json{{"reason", "macOS reported an error: x"}, {"perm", false}}));
}

TEST_F(EngineView, LinuxWordingOfTheThermalNote) {
    words = &linuxTexts;
    start();
    EXPECT_EQ(tickAt(0)["thermalNote"], std::string(linuxTexts.thermalNote));
}

}  // namespace
}  // namespace velmora::testing
