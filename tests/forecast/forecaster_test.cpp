#include "policy/forecaster.hpp"

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>

#include "forecast/test_curves.hpp"

namespace velmora::testing {
namespace {

constexpr double kLimit = 100.0;

// Feeds every sample up to `until` and returns the forecast then.
std::optional<Forecast> forecastAt(Forecaster& forecaster, const std::vector<ReplaySample>& samples,
                                   double until, double limitC = kLimit) {
    std::optional<Forecast> last;
    for (const ReplaySample& s : samples) {
        if (s.t > until) break;
        forecaster.add(MonoTime::fromSeconds(s.t), s.celsius, limitC);
        last = forecaster.current(MonoTime::fromSeconds(s.t));
    }
    return last;
}

double trueEta(double idle, double level, double tau, double x) {
    const double now = level - (level - idle) * std::exp(-x / tau);
    return tau * std::log((level - now) / (level - kLimit));
}

struct RiseCase {
    double tau;
    double levelOffset;
};

class FirstOrderRise : public ::testing::TestWithParam<RiseCase> {};

TEST_P(FirstOrderRise, GivesTauLevelAndEtaWithinFivePercentOnceATimeConstantHasBeenSeen) {
    const auto [tau, offset] = GetParam();
    const double idle = 40.0;
    const double level = kLimit + offset;
    const double stepAt = 0.0;
    // A time constant seen (and the 18 s of bins a forecast needs), and a later point as long
    // as the curve has not crossed.
    for (const double seen : {1.0, 1.5}) {
        const double x = std::max(seen * tau, 24.0);
        if (offset > 0 && trueEta(idle, level, tau, x) < 5.0) continue;
        const auto samples = exactRise(idle, level, tau, stepAt, x + 1.0);
        Forecaster forecaster;
        const auto forecast = forecastAt(forecaster, samples, x);
        ASSERT_TRUE(forecast.has_value()) << "tau " << tau << " after " << x << " s";
        const auto& fit = forecaster.lastFit();
        ASSERT_TRUE(fit && fit->useExponential) << "tau " << tau;
        EXPECT_NEAR(fit->exponential->tau, tau, 0.05 * tau);
        EXPECT_NEAR(fit->exponential->level, level, 0.05 * level);
        if (offset > 0) {
            ASSERT_EQ(forecast->kind, ForecastKind::critical);
            ASSERT_TRUE(forecast->eta.has_value());
            const double truth = trueEta(idle, level, tau, x);
            EXPECT_NEAR(forecast->eta->count(), truth, 0.05 * truth) << "tau " << tau;
            ASSERT_TRUE(forecast->levelC.has_value());
            EXPECT_NEAR(*forecast->levelC, level, 0.05 * level);
        } else {
            EXPECT_EQ(forecast->kind, ForecastKind::levelling);
            EXPECT_FALSE(forecast->eta.has_value());
            ASSERT_TRUE(forecast->levelC.has_value());
            EXPECT_NEAR(*forecast->levelC, level, 0.05 * level);
        }
    }
}

INSTANTIATE_TEST_SUITE_P(Forecaster, FirstOrderRise,
                         ::testing::Values(RiseCase{20, -5}, RiseCase{20, 5}, RiseCase{20, 15},
                                           RiseCase{60, -5}, RiseCase{60, 5}, RiseCase{60, 15},
                                           RiseCase{240, -5}, RiseCase{240, 5}, RiseCase{240, 15},
                                           RiseCase{600, -5}, RiseCase{600, 5}, RiseCase{600, 15}),
                         [](const auto& info) {
                             const auto& c = info.param;
                             return "Tau" + std::to_string(static_cast<int>(c.tau)) +
                                    (c.levelOffset < 0 ? "Under" : "Over") +
                                    std::to_string(static_cast<int>(std::fabs(c.levelOffset)));
                         });

std::vector<ReplaySample> ramp(double startC, double perSecond, double length) {
    std::vector<ReplaySample> samples;
    for (int t = 0; t <= static_cast<int>(length); ++t)
        samples.push_back({static_cast<double>(t), startC + perSecond * t});
    return samples;
}

TEST(Forecaster, AStraightRampGivesTheLinesAnswer) {
    const double start = 70.0;
    const double perSecond = 3.0 / 60.0;
    const auto samples = ramp(start, perSecond, 200.0);
    Forecaster forecaster;
    const auto forecast = forecastAt(forecaster, samples, 200.0);
    ASSERT_TRUE(forecast.has_value());
    EXPECT_FALSE(forecaster.lastFit()->useExponential);
    ASSERT_EQ(forecast->kind, ForecastKind::critical);
    const double truth = (kLimit - (start + perSecond * 200.0)) / perSecond;
    EXPECT_NEAR(forecast->eta->count(), truth, 1.0);
    ASSERT_TRUE(forecast->risePerMinuteC.has_value());
    EXPECT_NEAR(*forecast->risePerMinuteC, 3.0, 0.01);
    EXPECT_FALSE(forecast->levelC.has_value());
}

TEST(Forecaster, AFlatSeriesIsSteady) {
    std::vector<ReplaySample> samples;
    for (int t = 0; t <= 300; ++t)
        samples.push_back({static_cast<double>(t), t % 7 == 0 ? 61.0 : 60.0});
    Forecaster forecaster;
    const auto forecast = forecastAt(forecaster, samples, 300.0);
    ASSERT_TRUE(forecast.has_value());
    EXPECT_EQ(forecast->kind, ForecastKind::steady);
    EXPECT_FALSE(forecast->eta.has_value());
    EXPECT_FALSE(forecast->levelC.has_value());
}

TEST(Forecaster, AFallingTemperatureIsSteady) {
    const auto samples = exactRise(95.0, 50.0, 60.0, 0.0, 120.0);
    Forecaster forecaster;
    const auto forecast = forecastAt(forecaster, samples, 120.0);
    ASSERT_TRUE(forecast.has_value());
    EXPECT_EQ(forecast->kind, ForecastKind::steady);
}

TEST(Forecaster, GivesNothingBeforeEighteenSecondsOfReadings) {
    const auto samples = ramp(80.0, 0.2, 60.0);
    Forecaster forecaster;
    EXPECT_FALSE(forecastAt(forecaster, samples, 15.0).has_value());
    EXPECT_TRUE(forecastAt(forecaster, samples, 30.0).has_value());
}

TEST(Forecaster, TheEtaIsNeverNegativeAndCountsDownBetweenFits) {
    // Over the limit already, and still rising: zero, not a negative time.
    const auto samples = ramp(90.0, 0.5, 120.0);
    Forecaster forecaster;
    double previous = 1e9;
    for (const ReplaySample& s : samples) {
        forecaster.add(MonoTime::fromSeconds(s.t), s.celsius, kLimit);
        const auto forecast = forecaster.current(MonoTime::fromSeconds(s.t));
        if (!forecast || !forecast->eta) continue;
        EXPECT_GE(forecast->eta->count(), 0.0) << "at " << s.t;
        EXPECT_LE(forecast->eta->count(), previous + 1.0) << "at " << s.t;
        previous = forecast->eta->count();
    }
    const auto last = forecaster.current(MonoTime::fromSeconds(120.0));
    ASSERT_TRUE(last && last->eta);
    EXPECT_EQ(last->eta->count(), 0.0);
}

TEST(Forecaster, AGapStartsTheWindowAgain) {
    const auto samples = ramp(60.0, 0.1, 100.0);
    Forecaster forecaster;
    ASSERT_TRUE(forecastAt(forecaster, samples, 100.0).has_value());
    const double later = 100.0 + Forecaster::gapLimit.count() + 5.0;
    forecaster.add(MonoTime::fromSeconds(later), 70.0, kLimit);
    EXPECT_FALSE(forecaster.current(MonoTime::fromSeconds(later)).has_value());
    EXPECT_FALSE(forecaster.lastFit().has_value());
    // The new window holds only what came after the gap: a flat 70 °C is steady, exactly.
    for (int s = 1; s <= 30; ++s)
        forecaster.add(MonoTime::fromSeconds(later + s), 70.0, kLimit);
    const auto after = forecaster.current(MonoTime::fromSeconds(later + 30));
    ASSERT_TRUE(after.has_value());
    EXPECT_EQ(after->kind, ForecastKind::steady);
    EXPECT_NEAR(forecaster.lastFit()->line->at(0.0), 70.0, 1e-9);
    EXPECT_EQ(forecaster.stepsSeen(), 0);
}

TEST(Forecaster, TimeGoingBackwardsOrANewLimitStartsTheWindowAgain) {
    const auto samples = ramp(60.0, 0.1, 100.0);
    Forecaster backwards;
    ASSERT_TRUE(forecastAt(backwards, samples, 100.0).has_value());
    backwards.add(MonoTime::fromSeconds(50.0), 70.0, kLimit);
    EXPECT_FALSE(backwards.current(MonoTime::fromSeconds(50.0)).has_value());

    Forecaster newLimit;
    ASSERT_TRUE(forecastAt(newLimit, samples, 100.0).has_value());
    newLimit.add(MonoTime::fromSeconds(101.0), 70.1, 90.0);
    EXPECT_FALSE(newLimit.current(MonoTime::fromSeconds(101.0)).has_value());
}

TEST(Forecaster, ALoadStepStartsTheWindowAgainFromTheStep) {
    // Idle at 50 °C for four minutes, then a load that heads for 110 °C with tau 60 s.
    const double stepAt = 240.0;
    auto samples = exactRise(50.0, 110.0, 60.0, stepAt, stepAt + 90.0);
    for (auto& s : samples)
        s.celsius = std::round(s.celsius);
    Forecaster forecaster;
    const auto idle = forecastAt(forecaster, samples, stepAt - 1.0);
    ASSERT_TRUE(idle.has_value());
    EXPECT_EQ(idle->kind, ForecastKind::steady);
    EXPECT_EQ(forecaster.stepsSeen(), 0);
    const auto loaded = forecastAt(forecaster, samples, stepAt + 90.0);
    EXPECT_EQ(forecaster.stepsSeen(), 1);
    ASSERT_TRUE(forecaster.lastFit().has_value());
    // The window holds the rise only: it starts within a bin or two of the step.
    EXPECT_GE(forecaster.lastFit()->start, stepAt - 2 * Forecaster::binLength.count());
    ASSERT_TRUE(loaded && loaded->eta);
    const double truth = trueEta(50.0, 110.0, 60.0, 90.0);
    EXPECT_NEAR(loaded->eta->count(), truth, 0.25 * truth + 5.0);
}

}  // namespace
}  // namespace velmora::testing
