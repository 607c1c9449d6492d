// The forecaster against curves made for the purpose, beside the plain least-squares line a
// monitoring system would draw. The figures of both are printed; the thresholds apply to the
// forecaster.
#include <gtest/gtest.h>

#include <cmath>
#include <iostream>

#include "forecast/replay.hpp"
#include "forecast/scores.hpp"
#include "forecast/test_curves.hpp"

namespace velmora::testing {
namespace {

constexpr unsigned kSeed = 20261125;
constexpr int kCurves = 160;

TEST(ForecastStatistics, GeneratedCurvesStayWithinTheMissLateFalseAlarmAndErrorThresholds) {
    const auto curves = makeTestCurves(kSeed, kCurves);
    ASSERT_GE(curves.size(), 100U);
    const auto ours =
        scoreForecasts(curves, [](const TestCurve& c) { return replayEtas(c.readings, c.limitC); });
    const auto line = scoreForecasts(
        curves, [](const TestCurve& c) { return plainLineEtas(c.readings, c.limitC); });
    std::cout << ours.summary("forecaster") << "\n" << line.summary("plain line") << "\n";
    RecordProperty("forecaster", ours.summary("forecaster"));
    RecordProperty("plain_line", line.summary("plain line"));

    // Enough of each situation was judged for the rates to mean something.
    EXPECT_GT(ours.crossingAhead, 5000);
    EXPECT_GT(ours.quiet, 5000);
    EXPECT_GE(ours.quietCurves, 50);

    EXPECT_LE(ours.missRate(), 0.05);
    EXPECT_LE(ours.lateRate(), 0.05);
    EXPECT_LE(ours.falseCriticalRate(), 0.05);
    EXPECT_LE(ours.medianRelativeError(), 0.25);
}

TEST(ForecastStatistics, TheCurvesAreWhatTheyClaimToBe) {
    const auto curves = makeTestCurves(kSeed, kCurves);
    int crossing = 0;
    for (const TestCurve& c : curves) {
        ASSERT_EQ(c.readings.size(), c.truth.size());
        for (const auto& r : c.readings)
            ASSERT_EQ(r.celsius, std::round(r.celsius)) << "readings are whole degrees";
        if (c.kind == "rise over" || c.kind == "ramp") {
            EXPECT_TRUE(c.crossesAt.has_value()) << c.kind;
        }
        if (c.kind == "rise under") {
            EXPECT_FALSE(c.crossesAt.has_value());
        }
        if (c.crossesAt) ++crossing;
    }
    EXPECT_GT(crossing, kCurves / 3);
    EXPECT_LT(crossing, kCurves * 2 / 3 + 10);
}

}  // namespace
}  // namespace velmora::testing
