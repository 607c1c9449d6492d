#include <gtest/gtest.h>

#include "store/history_tiers.hpp"

namespace velmora {
namespace {

constexpr std::int64_t kStart = 1'789'999'200;  // a multiple of 900: every interval starts here

HistorySample sampleAt(std::int64_t time, double hottest, double cpu = 10.0) {
    HistorySample s;
    s.time = time;
    s.level = Level::ok;
    s.thermal = ThermalState::nominal;
    s.hottestC = hottest;
    s.cpuPercent = cpu;
    return s;
}

double mean(const HistoryRow& row, HistorySeries series) {
    return row.figure(series).value().mean;
}

TEST(HistoryTiers, EachSecondIsOnePointAtOneSecondResolution) {
    HistoryStore store;
    for (int i = 0; i < 5; ++i)
        store.add(sampleAt(kStart + i, 40.0 + i), std::nullopt);
    const auto rows = store.rows();
    ASSERT_EQ(rows.size(), 5U);
    for (int i = 0; i < 5; ++i) {
        EXPECT_EQ(rows[static_cast<std::size_t>(i)].time, kStart + i);
        EXPECT_EQ(rows[static_cast<std::size_t>(i)].resolution, 1);
        EXPECT_DOUBLE_EQ(mean(rows[static_cast<std::size_t>(i)], HistorySeries::hottest), 40.0 + i);
    }
}

TEST(HistoryTiers, CoarserPointsKeepMinimumMeanAndMaximum) {
    HistoryStore store;
    for (int i = 0; i < 10; ++i)
        store.add(sampleAt(kStart + i, 50.0 + i, i * 10.0), std::nullopt);
    store.add(sampleAt(kStart + 10, 70.0), std::nullopt);  // closes the first 10 s point
    const auto* point = store.tier(1).point(1);
    ASSERT_NE(point, nullptr);
    const auto row = historyRow(*point, 10);
    EXPECT_EQ(row.time, kStart);
    const auto hottest = row.figure(HistorySeries::hottest).value();
    EXPECT_DOUBLE_EQ(hottest.min, 50.0);
    EXPECT_DOUBLE_EQ(hottest.max, 59.0);
    EXPECT_DOUBLE_EQ(hottest.mean, 54.5);
    const auto cpu = row.figure(HistorySeries::cpuPercent).value();
    EXPECT_DOUBLE_EQ(cpu.min, 0.0);
    EXPECT_DOUBLE_EQ(cpu.max, 90.0);
    EXPECT_DOUBLE_EQ(cpu.mean, 45.0);
}

TEST(HistoryTiers, TheFinestTierRollsOverAfterFifteenMinutesAndOlderTimesComeFromCoarserOnes) {
    HistoryStore store;
    const int seconds = 30 * 60;
    for (int i = 0; i < seconds; ++i)
        store.add(sampleAt(kStart + i, 45.0), std::nullopt);
    EXPECT_EQ(store.tier(0).pushed(), static_cast<std::uint64_t>(seconds - 1));
    EXPECT_EQ(store.tier(0).point(1), nullptr) << "the first second was overwritten";
    const auto rows = store.rows();
    // 900 closed seconds and the open one at 1 s, then the 10 s points before them.
    ASSERT_EQ(rows.size(), 901U + 90U);
    const auto firstFine = rows.size() - 901;
    EXPECT_EQ(rows[firstFine].resolution, 1);
    EXPECT_EQ(rows[firstFine].time, kStart + seconds - 901);
    EXPECT_EQ(rows[firstFine - 1].resolution, 10);
    EXPECT_EQ(rows[firstFine - 1].time, kStart + seconds - 910);
    EXPECT_EQ(rows.front().time, kStart);
    for (std::size_t i = 1; i < rows.size(); ++i)
        ASSERT_LT(rows[i - 1].time, rows[i].time) << "row " << i;
}

TEST(HistoryTiers, AMonthOfSamplesKeepsThirtyDaysAtFifteenMinutesAndNoMore) {
    HistoryStore store;
    const std::int64_t days = 31;
    for (std::int64_t t = 0; t < days * 86400; t += 30)
        store.add(sampleAt(kStart + t, 50.0), std::nullopt);
    const auto rows = store.rows();
    const auto newest = kStart + days * 86400 - 30;
    EXPECT_EQ(rows.back().time, newest);
    // 2880 points of 15 min are 30 days; the open point adds the current quarter hour.
    EXPECT_GE(rows.front().time, newest - 30 * 86400 - 900);
    EXPECT_LE(rows.front().time, newest - 29 * 86400);
    EXPECT_EQ(rows.front().resolution, 900);
}

TEST(HistoryTiers, AGapLeavesNoPointsAndTheRowsResumeAfterIt) {
    HistoryStore store;
    for (int i = 0; i < 5; ++i)
        store.add(sampleAt(kStart + i, 40.0), std::nullopt);
    for (int i = 0; i < 5; ++i)
        store.add(sampleAt(kStart + 500 + i, 60.0), std::nullopt);
    const auto rows = store.rows();
    ASSERT_EQ(rows.size(), 10U);
    EXPECT_EQ(rows[4].time, kStart + 4);
    EXPECT_EQ(rows[5].time, kStart + 500);
}

TEST(HistoryTiers, AbsentFiguresStayAbsentAndDoNotPullTheMeanDown) {
    HistoryStore store;
    auto a = sampleAt(kStart, 50.0);
    a.gpuTempC = 70.0;
    auto b = sampleAt(kStart + 1, 50.0);  // no GPU reading
    store.add(a, std::nullopt);
    store.add(b, std::nullopt);
    store.add(sampleAt(kStart + 10, 50.0), std::nullopt);
    const auto rows = store.rows();
    EXPECT_FALSE(rows[1].figure(HistorySeries::gpuTemp).has_value());
    EXPECT_FALSE(rows[1].figure(HistorySeries::fan).has_value());
    const auto coarse = historyRow(*store.tier(1).point(1), 10);
    EXPECT_DOUBLE_EQ(coarse.figure(HistorySeries::gpuTemp).value().mean, 70.0);
}

TEST(HistoryTiers, APointKeepsTheHighestLevelAndWorstThermalState) {
    HistoryStore store;
    auto hot = sampleAt(kStart + 3, 90.0);
    hot.level = Level::hot;
    hot.thermal = ThermalState::serious;
    store.add(sampleAt(kStart, 50.0), std::nullopt);
    store.add(hot, std::nullopt);
    store.add(sampleAt(kStart + 5, 50.0), std::nullopt);
    store.add(sampleAt(kStart + 60, 50.0), std::nullopt);
    const auto minute = historyRow(*store.tier(2).point(1), 60);
    EXPECT_EQ(minute.level, Level::hot);
    EXPECT_EQ(minute.thermal, ThermalState::serious);
}

TEST(HistoryTiers, TheBusiestProcessKeptIsTheOneAtTheHottestMoment) {
    HistoryStore store;
    store.add(sampleAt(kStart, 85.0), std::string_view("cc1plus"));
    store.add(sampleAt(kStart + 1, 97.0), std::string_view("blender"));
    store.add(sampleAt(kStart + 2, 90.0), std::string_view("yes"));
    store.add(sampleAt(kStart + 3, 60.0), std::nullopt);
    store.add(sampleAt(kStart + 60, 50.0), std::nullopt);
    const auto minute = historyRow(*store.tier(2).point(1), 60);
    EXPECT_EQ(minute.busiest, "blender");
    EXPECT_EQ(store.rows().back().busiest, std::nullopt);
}

TEST(HistoryTiers, ALongNameIsCutAtACharacterBoundary) {
    HistoryStore store;
    const std::string name = "abcdefghijklmnopqr\xC3\xA9xyz";  // é spans bytes 18 and 19
    store.add(sampleAt(kStart, 85.0), std::string_view(name));
    store.add(sampleAt(kStart + 1, 85.0), std::nullopt);
    EXPECT_EQ(store.rows().front().busiest, "abcdefghijklmnopqr") << "the closed point";
    store.add(sampleAt(kStart + 2, 85.0), std::string_view("abcdefghijklmnopqrs"));
    EXPECT_EQ(store.rows().back().busiest, "abcdefghijklmnopqrs") << "19 bytes fit whole";
}

TEST(HistoryTiers, AClockStepBackDropsTheOverlappedPointsAndKeepsIncreasingTime) {
    HistoryStore store;
    for (int i = 0; i < 100; ++i)
        store.add(sampleAt(kStart + i, 40.0), std::nullopt);
    // The wall clock is set back 50 s: the new readings cover times already recorded.
    for (int i = 0; i < 20; ++i)
        store.add(sampleAt(kStart + 50 + i, 80.0), std::nullopt);
    const auto rows = store.rows();
    for (std::size_t i = 1; i < rows.size(); ++i)
        ASSERT_LT(rows[i - 1].time, rows[i].time) << "row " << i;
    ASSERT_EQ(rows.size(), 70U);
    EXPECT_EQ(rows.back().time, kStart + 69);
    EXPECT_DOUBLE_EQ(mean(rows.back(), HistorySeries::hottest), 80.0) << "the newer reading wins";
    EXPECT_DOUBLE_EQ(mean(rows[49], HistorySeries::hottest), 40.0) << "before the step is kept";
    EXPECT_DOUBLE_EQ(mean(rows[50], HistorySeries::hottest), 80.0);
}

TEST(HistoryTiers, RowsSinceStopsAtTheAskedTime) {
    HistoryStore store;
    for (int i = 0; i < 100; ++i)
        store.add(sampleAt(kStart + i, 40.0), std::nullopt);
    const auto rows = store.rowsSince(kStart + 90);
    ASSERT_EQ(rows.size(), 10U);
    EXPECT_EQ(rows.front().time, kStart + 90);
}

TEST(HistoryTiers, FiguresOutsideTheCompactRangeAreClampedNotWrapped) {
    HistoryStore store;
    auto s = sampleAt(kStart, 50.0);
    s.powerW = 5000.0;  // beyond 3276.7 W
    s.fanRpm = -3.0;
    store.add(s, std::nullopt);
    const auto row = store.rows().back();
    EXPECT_NEAR(row.figure(HistorySeries::power).value().mean, 3276.7, 0.01);
    EXPECT_DOUBLE_EQ(row.figure(HistorySeries::fan).value().mean, -3.0);
}

}  // namespace
}  // namespace velmora

namespace velmora {
namespace {

TEST(HistoryTiersDating, APointBegunMidIntervalIsDatedByItsFirstSampleNotBeforeIt) {
    HistoryStore store;
    const std::int64_t start = 1'789'999'200 + 437;  // 7 min 17 s into a quarter hour
    for (int i = 0; i < 1200; ++i)
        store.add(sampleAt(start + i, 50.0), std::nullopt);
    const auto rows = store.rows();
    EXPECT_EQ(rows.front().time, start) << "no row before the first reading";
    EXPECT_EQ(store.tier(3).point(1)->time, start);
    EXPECT_EQ(store.tier(1).point(2)->time, 1'789'999'200 + 440) << "later points start on time";
}

}  // namespace
}  // namespace velmora
