#include "policy/curve_fit.hpp"

#include <gtest/gtest.h>

#include <cmath>
#include <vector>

namespace velmora {
namespace {

std::vector<SeriesPoint> sampled(double length, double step, auto f) {
    std::vector<SeriesPoint> points;
    for (double x = 0; x <= length; x += step)
        points.push_back({x, f(x)});
    return points;
}

TEST(CurveFit, ALineIsFoundExactly) {
    const auto points = sampled(60, 3, [](double x) { return 50.0 + 0.25 * x; });
    const auto fit = fitLine(points);
    ASSERT_TRUE(fit.has_value());
    EXPECT_NEAR(fit->intercept, 50.0, 1e-9);
    EXPECT_NEAR(fit->slope, 0.25, 1e-12);
    EXPECT_NEAR(fit->rss, 0.0, 1e-12);
}

TEST(CurveFit, AnExponentialIsFoundWithItsTimeConstantAndLevel) {
    const auto points = sampled(120, 3, [](double x) { return 90.0 - 40.0 * std::exp(-x / 45.0); });
    const auto fit = fitExponential(points, 3.0, 2000.0);
    ASSERT_TRUE(fit.has_value());
    EXPECT_NEAR(fit->tau, 45.0, 0.01);
    EXPECT_NEAR(fit->level, 90.0, 0.01);
    EXPECT_NEAR(fit->distance, 40.0, 0.01);
    EXPECT_LT(fit->rss, 1e-6);
}

TEST(CurveFit, TooFewPointsFitNothing) {
    const std::vector<SeriesPoint> two{{0, 1}, {3, 2}};
    EXPECT_FALSE(fitLine(two).has_value());
    EXPECT_FALSE(fitExponential(two, 3.0, 2000.0).has_value());
    const std::vector<SeriesPoint> sameX{{1, 1}, {1, 2}, {1, 3}};
    EXPECT_FALSE(fitLine(sameX).has_value());
}

TEST(CurveFit, AHingeFindsWhereARampStarts) {
    const auto points =
        sampled(150, 3, [](double x) { return x < 60 ? 50.0 : 50.0 + 0.1 * (x - 60); });
    const auto hinge = fitHinge(points, 3, 7);
    ASSERT_TRUE(hinge.has_value());
    EXPECT_DOUBLE_EQ(hinge->bendX, 60.0);
    EXPECT_NEAR(hinge->change, 0.1, 1e-9);
    EXPECT_NEAR(hinge->rss, 0.0, 1e-9);
}

TEST(CurveFit, TheFCriticalValueMatchesTheTables) {
    // F(1, v) at 1 % and 0.1 %, from the published tables.
    EXPECT_NEAR(fCriticalOneExtra(10, 0.01), 10.04, 0.2);
    EXPECT_NEAR(fCriticalOneExtra(30, 0.01), 7.56, 0.1);
    EXPECT_NEAR(fCriticalOneExtra(10, 0.001), 21.04, 0.6);
    EXPECT_NEAR(fCriticalOneExtra(60, 0.001), 11.97, 0.2);
}

}  // namespace
}  // namespace velmora
