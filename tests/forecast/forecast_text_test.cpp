#include <gtest/gtest.h>

#include "policy/forecast.hpp"

namespace velmora {
namespace {

Forecast critical(double etaSeconds) {
    Forecast f;
    f.kind = ForecastKind::critical;
    f.eta = Seconds(etaSeconds);
    f.source = "CPU";
    f.celsius = 91.0;
    f.limitC = 100.0;
    return f;
}

TEST(ForecastText, ACriticalEtaUnderTenMinutesIsSaidInMinutes) {
    EXPECT_EQ(forecastPhrase(critical(240)), "critical in about 4 min");
    EXPECT_EQ(forecastHeadline(critical(240)), "Critical in about 4 min");
    EXPECT_EQ(forecastPhrase(critical(569)), "critical in about 9 min");
    EXPECT_EQ(forecastPhrase(critical(45)), "critical in under a minute");
    EXPECT_EQ(forecastPhrase(critical(0)), "critical in under a minute");
}

TEST(ForecastText, TenMinutesOrMoreAndSteadySayNothing) {
    EXPECT_EQ(forecastPhrase(critical(600)), "");
    EXPECT_EQ(forecastHeadline(critical(1800)), "");
    Forecast steady;
    EXPECT_EQ(forecastPhrase(steady), "");
}

TEST(ForecastText, ALevelUnderTheLimitIsSaidInWholeDegrees) {
    Forecast f;
    f.kind = ForecastKind::levelling;
    f.levelC = 87.6;
    EXPECT_EQ(forecastPhrase(f), "levelling off at 88 °C");
    EXPECT_EQ(forecastHeadline(f), "Levelling off at 88 °C");
}

TEST(ForecastText, CriticalWithinLooksOnlyAtCriticalEtas) {
    EXPECT_TRUE(criticalWithin(critical(299), forecastLoggedWithin));
    EXPECT_FALSE(criticalWithin(critical(300), forecastLoggedWithin));
    EXPECT_FALSE(criticalWithin(std::nullopt, forecastLoggedWithin));
    Forecast levelling;
    levelling.kind = ForecastKind::levelling;
    levelling.levelC = 80;
    EXPECT_FALSE(criticalWithin(levelling, forecastLoggedWithin));
}

TEST(ForecastText, TheLogLinesNameTheSourceTheCourseAndTheLimit) {
    Forecast f = critical(238);
    f.levelC = 104.2;
    EXPECT_EQ(forecastLogLine(f),
              "forecast: critical in about 240 s (CPU 91 °C, rising toward 104 °C; limit 100 °C)");
    Forecast line = critical(61);
    line.source = "GPU";
    line.risePerMinuteC = 2.34;
    EXPECT_EQ(forecastLogLine(line),
              "forecast: critical in about 60 s (GPU 91 °C, rising 2.3 °C/min; limit 100 °C)");
    EXPECT_EQ(forecastClearedLine("CPU", 86.4),
              "forecast: no longer heading for critical (CPU 86 °C)");
}

}  // namespace
}  // namespace velmora
