#include "metrics/forecast_feed.hpp"

#include <gtest/gtest.h>

#include <algorithm>
#include <functional>

#include "metrics/live_model.hpp"

namespace velmora {
namespace {

LimitReading cpu(double celsius) {
    return {"/sys/class/hwmon/hwmon0/temp1_input", "CPU", celsius, 100.0};
}

LimitReading gpu(double celsius) {
    return {"NVML GPU 0", "GPU", celsius, 90.0};
}

struct FeedRun {
    ForecastFeed feed;
    std::vector<std::string> lines;
    std::optional<Forecast> last;
    double t = 0.0;

    void feedFor(int seconds, const std::function<std::vector<LimitReading>(double)>& readings) {
        for (int i = 0; i < seconds; ++i) {
            t += 1.0;
            last = feed.sample(readings(t), MonoTime::fromSeconds(t));
            for (std::string& line : feed.takeNotices())
                lines.push_back(std::move(line));
        }
    }
};

TEST(ForecastFeed, LogsOnceWhenACriticalEtaUnderFiveMinutesAppearsAndOnceWhenItGoes) {
    FeedRun run;
    run.feedFor(60, [](double) { return std::vector{cpu(70.0)}; });
    EXPECT_TRUE(run.lines.empty());
    ASSERT_TRUE(run.last.has_value());
    EXPECT_EQ(run.last->kind, ForecastKind::steady);
    // A ramp of 6 °C a minute from 70 °C: the limit is 5 minutes off, then less.
    const double rampFrom = run.t;
    run.feedFor(120, [&](double t) { return std::vector{cpu(70.0 + (t - rampFrom) / 10.0)}; });
    ASSERT_EQ(run.lines.size(), 1U);
    EXPECT_EQ(run.lines[0].rfind("forecast: critical in about ", 0), 0U) << run.lines[0];
    EXPECT_NE(run.lines[0].find("s (CPU "), std::string::npos) << run.lines[0];
    EXPECT_NE(run.lines[0].find("; limit 100 °C)"), std::string::npos) << run.lines[0];
    // The load ends: the temperature falls back and stays.
    const double fallFrom = run.t;
    run.feedFor(120, [&](double t) {
        return std::vector{cpu(std::max(80.0, 82.0 - (t - fallFrom) / 5.0))};
    });
    ASSERT_EQ(run.lines.size(), 2U);
    EXPECT_EQ(run.lines[1].rfind("forecast: no longer heading for critical (CPU 8", 0), 0U)
        << run.lines[1];
    EXPECT_EQ(run.lines[1].substr(run.lines[1].size() - 5), " °C)") << run.lines[1];
    // And nothing more while it stays there.
    run.feedFor(120, [](double) { return std::vector{cpu(80.0)}; });
    EXPECT_EQ(run.lines.size(), 2U);
}

TEST(ForecastFeed, FollowsTheSourceNearestItsLimitAndKeepsItAgainstSmallDifferences) {
    ForecastFeed feed;
    (void)feed.sample({cpu(80.0), gpu(69.0)}, MonoTime::fromSeconds(1));
    EXPECT_EQ(feed.following(), cpu(0).id);
    // The GPU is now 21 °C under its limit, the CPU 20: too close to change over.
    (void)feed.sample({cpu(80.0), gpu(69.0 + 2.0)}, MonoTime::fromSeconds(2));
    EXPECT_EQ(feed.following(), cpu(0).id);
    // 17 °C under against 20: the GPU takes over.
    (void)feed.sample({cpu(80.0), gpu(73.0)}, MonoTime::fromSeconds(3));
    EXPECT_EQ(feed.following(), gpu(0).id);
    (void)feed.sample({}, MonoTime::fromSeconds(4));
    EXPECT_EQ(feed.following(), "");
}

TEST(ForecastFeed, TheForecastReachesThePagesAsTheirForecastEntry) {
    LiveInputs in;
    EXPECT_FALSE(LiveModel::dictionary(in).contains("forecast"));
    Forecast critical;
    critical.kind = ForecastKind::critical;
    critical.eta = Seconds(238.6);
    critical.levelC = 104.0;
    in.forecast = critical;
    EXPECT_EQ(LiveModel::dictionary(in)["forecast"],
              nlohmann::json::parse(
                  R"({"kind":"critical","etaSeconds":239,"text":"Critical in about 4 min"})"));
    Forecast levelling;
    levelling.kind = ForecastKind::levelling;
    levelling.levelC = 87.6;
    in.forecast = levelling;
    EXPECT_EQ(LiveModel::dictionary(in)["forecast"],
              nlohmann::json::parse(
                  R"({"kind":"levelling","levelC":88,"text":"Levelling off at 88 °C"})"));
    in.forecast = Forecast{};
    EXPECT_EQ(LiveModel::dictionary(in)["forecast"],
              nlohmann::json::parse(R"({"kind":"steady","text":""})"));
}

}  // namespace
}  // namespace velmora
