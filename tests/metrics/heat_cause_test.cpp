#include <gtest/gtest.h>
#include <nlohmann/json.hpp>

#include <memory>
#include <vector>

#include "metrics/heat_cause.hpp"
#include "metrics/heat_cause_tracker.hpp"
#include "metrics/live_model.hpp"

namespace velmora {
namespace {

HeatCause sampleCause() {
    HeatCause cause;
    cause.processes = {
        {"yes", 4242, 99.4}, {"cc1plus", 977, 35.2}, {"firefox", 1201, 12.0}, {"make", 976, 3.0}};
    cause.services = {{"user@1000.service/app-firefox.scope", 14.4}};
    return cause;
}

TEST(HeatCauseText, TheLogLineNamesTheTopThreeProcessesWithPidsAndTheServices) {
    EXPECT_EQ(heatRiseLine(LevelRise{Level::ok, Level::extreme}, sampleCause()),
              "heat: NORMAL -> EXTREME HEAT; busiest: yes (pid 4242) 99% of a core, cc1plus "
              "(pid 977) 35% of a core, firefox (pid 1201) 12% of a core; services: "
              "user@1000.service/app-firefox.scope 14%");
}

TEST(HeatCauseText, TheLogLineSaysSoWhenNothingWasMeasuredAndNamesGpuProcesses) {
    HeatCause cause;
    cause.gpu = {{"blender", 77, 60.0}};
    EXPECT_EQ(heatRiseLine(LevelRise{Level::warm, Level::hot}, cause),
              "heat: WARM -> HOT; busiest: nothing measurable; gpu: blender (pid 77) 60% of the "
              "GPU");
}

TEST(HeatCauseText, ThePagesTextIsTheTopThreeAndTheTrayPhraseTheTopOne) {
    EXPECT_EQ(heatCauseText(sampleCause()), "yes 99 % \u00b7 cc1plus 35 % \u00b7 firefox 12 %");
    EXPECT_EQ(topProcessPhrase(sampleCause()), "yes 99 %");
    EXPECT_EQ(topProcessPhrase(HeatCause{}), std::nullopt);
    EXPECT_EQ(heatCauseText(HeatCause{}), "");
}

TEST(LiveHeatCause, TheJsonCarriesTheCauseAboveNormalOnly) {
    LiveInputs inputs;
    inputs.heatCause = sampleCause();
    inputs.thermal = ThermalState::nominal;
    EXPECT_FALSE(LiveModel::dictionary(inputs).contains("heatCause"));
    inputs.thermal = ThermalState::fair;
    const auto cause = LiveModel::dictionary(inputs).at("heatCause");
    EXPECT_EQ(cause.at("text"), "yes 99 % \u00b7 cc1plus 35 % \u00b7 firefox 12 %");
    EXPECT_EQ(cause.at("processes").at(0),
              (nlohmann::json{{"name", "yes"}, {"pid", 4242}, {"percent", 99}}));
    EXPECT_EQ(cause.at("services").at(0),
              (nlohmann::json{{"name", "user@1000.service/app-firefox.scope"}, {"percent", 14}}));
    EXPECT_EQ(cause.at("gpu"), nlohmann::json::array());
}

TEST(LiveHeatCause, AHostileNameCannotSpoilThePagesJson) {
    LiveInputs inputs;
    inputs.thermal = ThermalState::serious;
    inputs.heatCause = HeatCause{{{"bad\xff\xfe)\n\"name", 7, 50.0}}, {}, {}, std::nullopt};
    const std::string text = LiveModel::json(inputs);
    ASSERT_NE(text, "{}");
    const auto parsed = nlohmann::json::parse(text);
    EXPECT_EQ(parsed.at("heatCause").at("processes").at(0).at("name"),
              "bad\xEF\xBF\xBD\xEF\xBF\xBD)\n\"name");
    EXPECT_EQ(parsed.at("heatCause").at("text"), "bad\xEF\xBF\xBD\xEF\xBF\xBD)\n\"name 50 %");
}

// Counts what the tracker asks of the platform.
class CountingReader final : public CauseReader {
  public:
    struct Counts {
        int counters = 0;
        int scans = 0;
        int forgets = 0;
        std::vector<MonoTime> windowStarts;
    };
    explicit CountingReader(std::shared_ptr<Counts> counts) : counts_(std::move(counts)) {}
    void keepCounters(MonoTime /*now*/) override { ++counts_->counters; }
    HeatCause scan(MonoTime windowStart, MonoTime /*now*/) override {
        ++counts_->scans;
        counts_->windowStarts.push_back(windowStart);
        HeatCause cause;
        cause.processes = {{"scan" + std::to_string(counts_->scans), 1, 50.0}};
        return cause;
    }
    void forget() override { ++counts_->forgets; }

  private:
    std::shared_ptr<Counts> counts_;
};

struct TrackerFixture : ::testing::Test {
    std::shared_ptr<CountingReader::Counts> counts = std::make_shared<CountingReader::Counts>();
    HeatCauseTracker tracker{std::make_unique<CountingReader>(counts)};

    static MonoTime at(double seconds) { return MonoTime::fromSeconds(1000.0 + seconds); }
};

TEST_F(TrackerFixture, AtNormalNothingIsScannedButTheCheapCountersAreKept) {
    for (int second = 0; second < 120; ++second) {
        EXPECT_EQ(tracker.observe(Level::ok, 50.0, at(second)), std::nullopt);
    }
    EXPECT_EQ(counts->scans, 0);
    EXPECT_EQ(counts->counters, 120);
}

TEST_F(TrackerFixture, ARiseScansAtOnceAndSaysSoOnThatSampleOnly) {
    tracker.observe(Level::ok, 50.0, at(0));
    const auto risen = tracker.observe(Level::extreme, 60.0, at(1));
    ASSERT_TRUE(risen);
    EXPECT_EQ(counts->scans, 1);
    EXPECT_EQ(risen->rise, (LevelRise{Level::ok, Level::extreme}));
    EXPECT_EQ(risen->processes.front().name, "scan1");
    const auto next = tracker.observe(Level::extreme, 61.0, at(2));
    ASSERT_TRUE(next);
    EXPECT_EQ(next->rise, std::nullopt);
    EXPECT_EQ(counts->scans, 1);  // the last ranking is shown until the next scan is due
}

TEST_F(TrackerFixture, AboveNormalItScansEveryFiveSecondsAndAtOnceOnEachFurtherRise) {
    tracker.observe(Level::warm, 50.0, at(0));
    EXPECT_EQ(counts->scans, 1);  // a launch above NORMAL counts as a rise
    for (int second = 1; second <= 10; ++second)
        tracker.observe(Level::warm, 50.0, at(second));
    EXPECT_EQ(counts->scans, 3);  // at 0, 5 and 10
    const auto risen = tracker.observe(Level::hot, 55.0, at(11));
    EXPECT_EQ(counts->scans, 4);
    EXPECT_EQ(risen->rise, (LevelRise{Level::warm, Level::hot}));
    const auto lower = tracker.observe(Level::warm, 55.0, at(12));
    EXPECT_EQ(lower->rise, std::nullopt);  // a step down is no rise
    EXPECT_EQ(counts->scans, 4);
}

TEST_F(TrackerFixture, BackAtNormalTheRecordsAreDroppedAndTheNextStepUpIsARiseAgain) {
    tracker.observe(Level::hot, 50.0, at(0));
    EXPECT_EQ(tracker.observe(Level::ok, 50.0, at(1)), std::nullopt);
    EXPECT_EQ(counts->forgets, 1);
    const auto again = tracker.observe(Level::hot, 50.0, at(2));
    EXPECT_EQ(again->rise, (LevelRise{Level::ok, Level::hot}));
    EXPECT_EQ(counts->scans, 2);
}

TEST_F(TrackerFixture, AFreshCollectorTakingOverAtTheSameLevelIsNoRise) {
    tracker.assumeLevel(Level::extreme);
    const auto cause = tracker.observe(Level::extreme, 50.0, at(0));
    ASSERT_TRUE(cause);
    EXPECT_EQ(cause->rise, std::nullopt);
}

TEST_F(TrackerFixture, TheWindowStartsWhereTheHottestTemperatureBeganToClimb) {
    // Hot and falling, then flat at 50 °C, then from 200 s on a climb of a degree a second.
    for (int second = 0; second < 100; ++second)
        tracker.observe(Level::ok, 80.0 - second * 0.3, at(second));
    for (int second = 100; second < 200; ++second)
        tracker.observe(Level::ok, 50.0, at(second));
    for (int second = 200; second <= 240; ++second)
        tracker.observe(Level::ok, 50.0 + (second - 200), at(second));
    EXPECT_EQ(tracker.windowStart(at(240)), at(200));
}

TEST_F(TrackerFixture, TheWindowIsAtMostTenMinutesAndAtLeastFiveSeconds) {
    for (int second = 0; second <= 900; ++second)
        tracker.observe(Level::ok, 30.0 + second * 0.1, at(second));
    EXPECT_EQ(tracker.windowStart(at(900)), at(300));
    tracker.observe(Level::ok, 20.0, at(901));  // it just fell: nothing is climbing now
    EXPECT_EQ(tracker.windowStart(at(901)), at(896));
}

TEST_F(TrackerFixture, WithoutAnyTemperatureTheWindowIsTheShortestOne) {
    tracker.observe(Level::hot, std::nullopt, at(0));
    ASSERT_EQ(counts->windowStarts.size(), 1U);
    EXPECT_EQ(counts->windowStarts.front(), at(-5));
}

}  // namespace
}  // namespace velmora
