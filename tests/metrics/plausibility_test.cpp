#include <gtest/gtest.h>

#include <cmath>
#include <limits>

#include "metrics/system_records.hpp"
#include "metrics/temp_reading.hpp"

namespace velmora {
namespace {

constexpr double kInf = std::numeric_limits<double>::infinity();

TEST(PlausibleCelsius, RejectsExactlyOneAndExactly150) {
    EXPECT_FALSE(plausibleCelsius(1.0));
    EXPECT_FALSE(plausibleCelsius(150.0));
    EXPECT_TRUE(plausibleCelsius(1.0001));
    EXPECT_TRUE(plausibleCelsius(149.999));
}

TEST(PlausibleCelsius, RejectsInfinitiesAndNaN) {
    EXPECT_FALSE(plausibleCelsius(kInf));
    EXPECT_FALSE(plausibleCelsius(-kInf));
    EXPECT_FALSE(plausibleCelsius(std::nan("")));
}

TEST(PlausibleRPM, ZeroUpToBelowTwentyThousand) {
    EXPECT_TRUE(plausibleRPM(0));
    EXPECT_TRUE(plausibleRPM(19999.9));
    EXPECT_FALSE(plausibleRPM(20000));
    EXPECT_FALSE(plausibleRPM(-1));
    EXPECT_FALSE(plausibleRPM(std::nan("")));
    EXPECT_FALSE(plausibleRPM(kInf));
}

TEST(BatteryPower, DischargeAt1500mAAnd12V) {
    const BatteryInfo battery{.amperageMA = -1500.0, .voltageMV = 12000.0};
    EXPECT_EQ(batteryPower(battery, "src"), (PowerReading{18.0, "Battery discharge", "src"}));
}

TEST(BatteryPower, ChargeIsLabelledAsCharge) {
    const BatteryInfo battery{.amperageMA = 2000.0, .voltageMV = 12500.0};
    EXPECT_EQ(batteryPower(battery, "src")->label, "Battery charge");
}

TEST(BatteryPower, TinyCurrentLowVoltageOrMissingFiguresGiveNothing) {
    EXPECT_FALSE(batteryPower({.amperageMA = 0.5, .voltageMV = 10000.0}, "src"));
    EXPECT_FALSE(batteryPower({.amperageMA = -1500.0, .voltageMV = 1000.0}, "src"));
    EXPECT_FALSE(batteryPower({.amperageMA = -1500.0}, "src"));
    EXPECT_FALSE(batteryPower({.voltageMV = 12000.0}, "src"));
    // 400 W or more is a misreading.
    EXPECT_FALSE(batteryPower({.amperageMA = -40000.0, .voltageMV = 10000.0}, "src"));
}

}  // namespace
}  // namespace velmora
