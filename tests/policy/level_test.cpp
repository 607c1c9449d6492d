#include "policy/level.hpp"

#include <gtest/gtest.h>

#include <cmath>

namespace velmora {
namespace {

TEST(Band, EdgesBelongToTheHigherLevel) {
    EXPECT_EQ(band(59.999), Level::ok);
    EXPECT_EQ(band(60), Level::warm);
    EXPECT_EQ(band(79.9), Level::warm);
    EXPECT_EQ(band(80.0), Level::hot);
    EXPECT_EQ(band(95), Level::extreme);
    EXPECT_EQ(band(99.99), Level::extreme);
    EXPECT_EQ(band(100), Level::blowout);
}

TEST(Band, NanIsOk) {
    EXPECT_EQ(band(std::nan("")), Level::ok);
}

TEST(Band, NegativeTemperatureIsOk) {
    EXPECT_EQ(band(-40), Level::ok);
}

TEST(Band, InfinityIsBlowout) {
    EXPECT_EQ(band(INFINITY), Level::blowout);
}

TEST(Level, RawValueFiveIsAbsent) {
    EXPECT_FALSE(levelFromRaw(5).has_value());
    EXPECT_FALSE(levelFromRaw(-1).has_value());
}

TEST(Level, RawValuesRoundTrip) {
    for (int raw = 0; raw <= 4; ++raw) {
        const auto level = levelFromRaw(raw);
        ASSERT_TRUE(level.has_value());
        EXPECT_EQ(rawValue(*level), raw);
    }
}

TEST(Level, HotIsLessThanExtreme) {
    EXPECT_LT(Level::hot, Level::extreme);
    EXPECT_LE(Level::ok, Level::warm);
    EXPECT_GT(Level::blowout, Level::extreme);
    EXPECT_GE(Level::extreme, Level::extreme);
}

TEST(Level, ExtremeSharesStateNameWithHot) {
    EXPECT_EQ(stateName(Level::extreme), stateName(Level::hot));
    EXPECT_EQ(stateName(Level::hot), "Serious");
}

TEST(Level, LabelsAndStateNames) {
    EXPECT_EQ(label(Level::ok), "NORMAL");
    EXPECT_EQ(label(Level::warm), "WARM");
    EXPECT_EQ(label(Level::hot), "HOT");
    EXPECT_EQ(label(Level::extreme), "EXTREME HEAT");
    EXPECT_EQ(label(Level::blowout), "EMERGENCY");
    EXPECT_EQ(stateName(Level::ok), "Nominal");
    EXPECT_EQ(stateName(Level::warm), "Fair");
    EXPECT_EQ(stateName(Level::blowout), "Critical");
}

}  // namespace
}  // namespace velmora
