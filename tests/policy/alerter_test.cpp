#include "policy/alerter.hpp"

#include <gtest/gtest.h>

#include <cmath>
#include <optional>

namespace velmora {
namespace {

MonoTime at(double seconds) {
    return MonoTime::fromSeconds(1'800'000'000.0 + seconds);
}

TEST(Alerter, SustainedHotBecomesExtremeAtNinetySeconds) {
    Alerter alerter(false);
    for (int s = 0; s < 90; ++s) {
        EXPECT_EQ(alerter.update(85, at(s)), Level::hot) << "second " << s;
    }
    EXPECT_EQ(alerter.update(85, at(90)), Level::extreme);
    EXPECT_EQ(alerter.update(85, at(1000)), Level::extreme);
}

TEST(Alerter, SustainedHotWithTimedStageBReachesBlowoutAt150Seconds) {
    Alerter alerter(true);
    for (int s = 0; s < 150; ++s) {
        const auto expected = s < 90 ? Level::hot : Level::extreme;
        EXPECT_EQ(alerter.update(85, at(s)), expected) << "second " << s;
    }
    EXPECT_EQ(alerter.update(85, at(150)), Level::blowout);
}

TEST(Alerter, ExtremeWithoutTimedStageBStaysExtreme) {
    Alerter alerter(false);
    for (int s = 0; s <= 600; s += 10)
        EXPECT_EQ(alerter.update(96, at(s)), Level::extreme);
}

TEST(Alerter, ExtremeWithTimedStageBPromotesAfterSixtySeconds) {
    Alerter alerter(true);
    for (int s = 0; s < 60; ++s)
        EXPECT_EQ(alerter.update(96, at(s)), Level::extreme);
    EXPECT_EQ(alerter.update(96, at(60)), Level::blowout);
}

TEST(Alerter, HundredIsBlowoutAtOnce) {
    Alerter alerter(false);
    EXPECT_EQ(alerter.update(100.0, at(0)), Level::blowout);
}

TEST(Alerter, JustBelowHundredIsExtreme) {
    Alerter alerter(false);
    EXPECT_EQ(alerter.update(99.99, at(0)), Level::extreme);
}

TEST(Alerter, AbsentReadingRestartsBothTimers) {
    Alerter alerter(true);
    for (int s = 0; s < 80; ++s)
        alerter.update(85, at(s));
    EXPECT_EQ(alerter.update(std::nullopt, at(80)), std::nullopt);
    EXPECT_FALSE(alerter.hotSince().has_value());
    EXPECT_FALSE(alerter.extremeSince().has_value());
    EXPECT_EQ(alerter.update(85, at(81)), Level::hot);
    EXPECT_EQ(alerter.update(85, at(170)), Level::hot);  // 89 s into the new run
    EXPECT_EQ(alerter.update(85, at(171)), Level::extreme);
}

TEST(Alerter, CoolReadingClearsHotRun) {
    Alerter alerter(false);
    alerter.update(85, at(0));
    alerter.update(85, at(50));
    EXPECT_EQ(alerter.update(79.9, at(60)), Level::warm);
    EXPECT_FALSE(alerter.hotSince().has_value());
    EXPECT_EQ(alerter.update(85, at(61)), Level::hot);
    EXPECT_EQ(alerter.update(85, at(150)), Level::hot);
    EXPECT_EQ(alerter.update(85, at(151)), Level::extreme);
}

TEST(Alerter, NanCountsAsOkAndClearsBothRuns) {
    Alerter alerter(true);
    alerter.update(96, at(0));
    EXPECT_EQ(alerter.update(std::nan(""), at(1)), Level::ok);
    EXPECT_FALSE(alerter.hotSince().has_value());
    EXPECT_FALSE(alerter.extremeSince().has_value());
}

TEST(Alerter, HotExtremeHotRunKeepsItsFirstStart) {
    Alerter alerter(false);
    alerter.update(85, at(0));
    alerter.update(97, at(30));
    EXPECT_EQ(alerter.update(85, at(60)), Level::hot);
    EXPECT_EQ(alerter.update(85, at(90)), Level::extreme);
}

TEST(Alerter, BlowoutSpikeKeepsStageARunning) {
    Alerter alerter(true);
    alerter.update(96, at(0));
    EXPECT_EQ(alerter.update(101, at(20)), Level::blowout);
    EXPECT_EQ(alerter.update(96, at(40)), Level::extreme);
    EXPECT_EQ(alerter.update(96, at(60)), Level::blowout);
}

TEST(Alerter, PlainHotClearsStageARun) {
    Alerter alerter(true);
    alerter.update(96, at(0));
    EXPECT_TRUE(alerter.extremeSince().has_value());
    EXPECT_EQ(alerter.update(85, at(10)), Level::hot);
    EXPECT_FALSE(alerter.extremeSince().has_value());
}

}  // namespace
}  // namespace velmora
