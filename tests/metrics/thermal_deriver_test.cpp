#include "metrics/linux/thermal_deriver.hpp"

#include <gtest/gtest.h>

#include <cmath>
#include <limits>

namespace velmora {
namespace {

using TS = ThermalState;

TripPoint trip(const char* type, double celsius, std::optional<double> hyst = std::nullopt) {
    return TripPoint{type, celsius, hyst};
}

/// One source fed one temperature per step.
struct OneSource {
    ThermalDeriver deriver;

    explicit OneSource(std::vector<ThermalCondition> conditions) {
        std::vector<ThermalSourceDef> sourceDefs;
        sourceDefs.push_back({"zone", std::move(conditions)});
        deriver.setSources(std::move(sourceDefs));
    }
    TS at(std::optional<double> celsius, bool throttled = false) {
        const std::vector<std::optional<double>> readings{celsius};
        return deriver.update(readings, throttled);
    }
};

TEST(ThermalDerivation, PassiveTripIsFairTenBelowAndSeriousAtTheTrip) {
    OneSource s(zoneConditions({trip("passive", 90)}));
    EXPECT_EQ(s.at(79.9), TS::nominal);
    EXPECT_EQ(s.at(80), TS::fair);
    EXPECT_EQ(s.at(90), TS::serious);
}

TEST(ThermalDerivation, HotTripIsCriticalAfterTwoSamples) {
    OneSource s(zoneConditions({trip("hot", 95)}));
    EXPECT_EQ(s.at(94.9), TS::nominal);
    EXPECT_EQ(s.at(95), TS::serious);
    EXPECT_EQ(s.at(95), TS::critical);
}

TEST(ThermalDerivation, CriticalTripRowsAtTwentyTenAndFiveBelow) {
    OneSource s(zoneConditions({trip("critical", 105)}));
    EXPECT_EQ(s.at(84.9), TS::nominal);
    EXPECT_EQ(s.at(85), TS::fair);
    EXPECT_EQ(s.at(95), TS::serious);
    EXPECT_EQ(s.at(100), TS::serious);  // the first critical sample only
    EXPECT_EQ(s.at(100), TS::critical);
}

TEST(ThermalDerivation, ActiveTripsAreFanStepsNotDanger) {
    OneSource s(zoneConditions({trip("active", 50)}));
    EXPECT_EQ(s.at(90), TS::nominal);
}

TEST(ThermalDerivation, HwmonMaxIsFair) {
    OneSource s(hwmonConditions({.max = 80.0}));
    EXPECT_EQ(s.at(79.9), TS::nominal);
    EXPECT_EQ(s.at(80), TS::fair);
}

TEST(ThermalDerivation, HwmonCritIsFairFifteenBelowAndSeriousAtIt) {
    OneSource s(hwmonConditions({.crit = 100.0}));
    EXPECT_EQ(s.at(84.9), TS::nominal);
    EXPECT_EQ(s.at(85), TS::fair);
    EXPECT_EQ(s.at(100), TS::serious);
}

TEST(ThermalDerivation, HwmonEmergencyIsCritical) {
    OneSource s(hwmonConditions({.crit = 100.0, .emergency = 105.0}));
    EXPECT_EQ(s.at(105), TS::serious);
    EXPECT_EQ(s.at(105), TS::critical);
}

TEST(ThermalDerivation, ThrottleCounterRiseIsSeriousForThatSample) {
    OneSource s(hwmonConditions({.max = 80.0}));
    EXPECT_EQ(s.at(50, true), TS::serious);
    EXPECT_EQ(s.at(50, false), TS::nominal);
    EXPECT_EQ(s.at(81, true), TS::serious);
}

TEST(ThermalDerivation, MachineStateIsTheHighestSource) {
    ThermalDeriver deriver;
    deriver.setSources(
        {{"a", zoneConditions({trip("passive", 90)})}, {"b", hwmonConditions({.max = 60.0})}});
    const std::vector<std::optional<double>> readings{91.0, 61.0};
    EXPECT_EQ(deriver.update(readings, false), TS::serious);
    EXPECT_EQ(deriver.drivingSource(), "a");
    EXPECT_EQ(deriver.usableSources(), 2);
}

TEST(ThermalDerivation, NoUsableSourceIsNominal) {
    ThermalDeriver none;
    EXPECT_EQ(none.update({}, false), TS::nominal);
    EXPECT_EQ(none.usableSources(), 0);
    OneSource unread(hwmonConditions({.max = 60.0}));
    EXPECT_EQ(unread.at(std::nullopt), TS::nominal);
    EXPECT_EQ(unread.deriver.usableSources(), 0);
}

TEST(ThermalDerivation, ImplausibleTemperaturesDoNotCount) {
    OneSource s(zoneConditions({trip("critical", 105)}));
    EXPECT_EQ(s.at(150), TS::nominal);
    EXPECT_EQ(s.at(std::nan("")), TS::nominal);
    EXPECT_EQ(s.at(1.0), TS::nominal);
}

TEST(ThermalDerivation, ImplausibleTripsAreIgnored) {
    // x86_pkg_temp reports disabled trips as 0; nvme may report 65261.85 °C.
    EXPECT_TRUE(zoneConditions({trip("passive", 0), trip("critical", 65261.85)}).empty());
    EXPECT_TRUE(hwmonConditions({.max = 65261.85, .crit = -273.15}).empty());
    OneSource s(zoneConditions({trip("passive", 0), trip("critical", 105)}));
    EXPECT_EQ(s.at(20), TS::nominal);
}

TEST(ThermalDerivation, FallingNeedsThreeDegreesBelowTheRaisingThreshold) {
    OneSource s(zoneConditions({trip("passive", 90)}));
    EXPECT_EQ(s.at(90), TS::serious);
    EXPECT_EQ(s.at(89), TS::serious);
    EXPECT_EQ(s.at(87.1), TS::serious);
    EXPECT_EQ(s.at(87), TS::fair);  // 3 °C below the passive trip
    EXPECT_EQ(s.at(77.1), TS::fair);
    EXPECT_EQ(s.at(77), TS::nominal);
}

TEST(ThermalDerivation, HoveringAtAThresholdDoesNotFlap) {
    OneSource s(hwmonConditions({.max = 80.0}));
    for (const double t : {80.0, 79.5, 80.2, 78.0, 80.0, 77.5})
        EXPECT_EQ(s.at(t), TS::fair) << t;
}

TEST(ThermalDerivation, ALargerTripHysteresisIsUsedForTheFall) {
    OneSource s(zoneConditions({trip("passive", 90, 8.0)}));
    EXPECT_EQ(s.at(90), TS::serious);
    EXPECT_EQ(s.at(83), TS::serious);
    EXPECT_EQ(s.at(82), TS::fair);
}

TEST(ThermalDerivation, ASmallerTripHysteresisStillNeedsThreeDegrees) {
    OneSource s(zoneConditions({trip("passive", 90, 1.0)}));
    EXPECT_EQ(s.at(90), TS::serious);
    EXPECT_EQ(s.at(88), TS::serious);
}

TEST(ThermalDerivation, HwmonHysteresisIsTheAbsoluteTemperatureWhereTheAlarmClears) {
    OneSource s(hwmonConditions({.crit = 100.0, .critHyst = 90.0}));
    EXPECT_EQ(s.at(100), TS::serious);
    EXPECT_EQ(s.at(91), TS::serious);
    EXPECT_EQ(s.at(90), TS::fair);
}

TEST(ThermalDerivation, OneGlitchAtCriticalNeverReachesCritical) {
    OneSource s(zoneConditions({trip("hot", 95)}));
    EXPECT_EQ(s.at(60), TS::nominal);
    EXPECT_EQ(s.at(99), TS::serious);
    EXPECT_EQ(s.at(60), TS::nominal);
    EXPECT_EQ(s.at(99), TS::serious);
}

TEST(ThermalDerivation, CriticalHeldWithinTheMarginStaysCritical) {
    OneSource s(zoneConditions({trip("hot", 95)}));
    s.at(96);
    EXPECT_EQ(s.at(96), TS::critical);
    EXPECT_EQ(s.at(93), TS::critical);
    EXPECT_EQ(s.at(92), TS::nominal);
}

// A source that stops reading is held, stale, for three samples, then stops counting.
TEST(ThermalDerivation, SensorThatStopsReadingWhileCriticalIsHeldThreeSamplesThenStopsCounting) {
    ThermalDeriver deriver;
    deriver.setSources(
        {{"gone", zoneConditions({trip("hot", 95)})}, {"stays", hwmonConditions({.max = 70.0})}});
    const std::vector<std::optional<double>> hot{99.0, 72.0};
    deriver.update(hot, false);
    ASSERT_EQ(deriver.update(hot, false), TS::critical);
    const std::vector<std::optional<double>> vanished{std::nullopt, 72.0};
    for (int held = 1; held <= ThermalDeriver::holdSamples; ++held) {
        EXPECT_EQ(deriver.update(vanished, false), TS::critical) << "held sample " << held;
        EXPECT_EQ(deriver.staleSources(), 1);
        EXPECT_EQ(deriver.staleIds(), std::vector<std::string>{"gone"});
        EXPECT_EQ(deriver.lastPlausible("gone"), 99.0);
    }
    EXPECT_EQ(deriver.update(vanished, false), TS::fair);
    EXPECT_EQ(deriver.staleSources(), 0);
    EXPECT_EQ(deriver.lastPlausible("gone"), std::nullopt);
    // When it comes back it must again hold critical for two samples.
    EXPECT_EQ(deriver.update(hot, false), TS::serious);
    EXPECT_EQ(deriver.update(hot, false), TS::critical);
}

// A source no longer found at a rediscovery is held like a failed read before it is dropped.
TEST(ThermalDerivation, SensorRemovedAtRediscoveryWhileCriticalIsHeldThenForgotten) {
    ThermalDeriver deriver;
    deriver.setSources({{"gone", zoneConditions({trip("hot", 95)})}});
    const std::vector<std::optional<double>> hot{99.0};
    deriver.update(hot, false);
    ASSERT_EQ(deriver.update(hot, false), TS::critical);
    deriver.setSources({});
    for (int held = 1; held <= ThermalDeriver::holdSamples; ++held) {
        EXPECT_EQ(deriver.update({}, false), TS::critical) << "held sample " << held;
    }
    EXPECT_EQ(deriver.update({}, false), TS::nominal);
    EXPECT_EQ(deriver.sourceCount(), 0U);
}

TEST(ThermalDerivation, SensorFailingEveryThirdReadNeverEndsTheEmergency) {
    OneSource s(hwmonConditions({.emergency = 110.0}));
    s.at(120);
    ASSERT_EQ(s.at(120), TS::critical);
    for (int i = 0; i < 30; ++i) {
        const bool fails = i % 3 == 2;
        EXPECT_EQ(s.at(fails ? std::nullopt : std::optional(120.0)), TS::critical)
            << "sample " << i;
    }
}

TEST(ThermalDerivation, HeldSourceThatReadsAgainIsNoLongerStale) {
    OneSource s(hwmonConditions({.emergency = 110.0}));
    s.at(120);
    s.at(120);
    s.at(std::nullopt);
    s.at(std::nullopt);
    EXPECT_EQ(s.at(120), TS::critical);
    EXPECT_EQ(s.deriver.staleSources(), 0);
    // The hold starts afresh: three more failed reads are held again.
    for (int held = 1; held <= ThermalDeriver::holdSamples; ++held) {
        EXPECT_EQ(s.at(std::nullopt), TS::critical) << "held sample " << held;
    }
    EXPECT_EQ(s.at(std::nullopt), TS::nominal);
}

TEST(ThermalDerivation, ReadingPastTheCeilingAfterAnEmergencyKeepsIt) {
    OneSource s(hwmonConditions({.emergency = 110.0}));
    s.at(120);
    ASSERT_EQ(s.at(120), TS::critical);
    for (int i = 0; i < 10; ++i) {
        EXPECT_EQ(s.at(151), TS::critical) << "sample " << i;
    }
    EXPECT_EQ(s.at(std::numeric_limits<double>::infinity()), TS::critical);
}

TEST(ThermalDerivation, ReadingPastTheCeilingWithNothingHeldDoesNotCount) {
    OneSource s(hwmonConditions({.emergency = 110.0}));
    s.at(40);
    EXPECT_EQ(s.at(151), TS::nominal);
    EXPECT_EQ(s.at(151), TS::nominal);
}

TEST(ThermalDerivation, ReadingBelowTheFloorAfterAnEmergencyIsAFailedRead) {
    OneSource s(hwmonConditions({.emergency = 110.0}));
    s.at(120);
    s.at(120);
    for (int held = 1; held <= ThermalDeriver::holdSamples; ++held) {
        EXPECT_EQ(s.at(0), TS::critical) << "held sample " << held;
    }
    EXPECT_EQ(s.at(0), TS::nominal);
}

TEST(ThermalDerivation, AssumedCriticalNeedsOneMoreCriticalSample) {
    OneSource s(zoneConditions({trip("hot", 95)}));
    s.deriver.assumePrevious(TS::critical);
    EXPECT_EQ(s.at(99), TS::critical);
    OneSource fresh(zoneConditions({trip("hot", 95)}));
    fresh.deriver.assumePrevious(TS::serious);
    EXPECT_EQ(fresh.at(99), TS::serious);
}

TEST(ThermalDerivation, RediscoveryKeepsWhatASourceHeld) {
    ThermalDeriver deriver;
    deriver.setSources({{"zone0", zoneConditions({trip("passive", 90)})}});
    const std::vector<std::optional<double>> at90{90.0};
    ASSERT_EQ(deriver.update(at90, false), TS::serious);
    deriver.setSources({{"new", hwmonConditions({.max = 60.0})},
                        {"zone0", zoneConditions({trip("passive", 90)})}});
    const std::vector<std::optional<double>> dipped{40.0, 88.0};
    EXPECT_EQ(deriver.update(dipped, false), TS::serious);
}

}  // namespace
}  // namespace velmora
