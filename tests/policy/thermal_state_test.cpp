#include "policy/thermal_state.hpp"

#include <gtest/gtest.h>

#include <string>

#include "policy/level.hpp"
#include "policy/temp_sensor.hpp"

namespace velmora {
namespace {

TEST(ThermalStateToC, SyntheticValuesNeverLandOnHot) {
    EXPECT_EQ(thermalStateToC(ThermalState::nominal), 55.0);
    EXPECT_EQ(thermalStateToC(ThermalState::fair), 78.0);
    EXPECT_EQ(thermalStateToC(ThermalState::serious), 96.0);
    EXPECT_EQ(thermalStateToC(ThermalState::critical), 108.0);
    EXPECT_EQ(band(*thermalStateToC(ThermalState::nominal)), Level::ok);
    EXPECT_EQ(band(*thermalStateToC(ThermalState::fair)), Level::warm);
    EXPECT_EQ(band(*thermalStateToC(ThermalState::serious)), Level::extreme);
    EXPECT_EQ(band(*thermalStateToC(ThermalState::critical)), Level::blowout);
}

TEST(ThermalStateToC, UnknownRawValueIsAbsent) {
    EXPECT_FALSE(thermalStateToC(static_cast<ThermalState>(7)).has_value());
}

TEST(ThermalStateNamed, AnyLetterCase) {
    EXPECT_EQ(thermalStateNamed("SERIOUS"), ThermalState::serious);
    EXPECT_EQ(thermalStateNamed("Serious"), ThermalState::serious);
    EXPECT_EQ(thermalStateNamed("nominal"), ThermalState::nominal);
    EXPECT_EQ(thermalStateNamed("FaIr"), ThermalState::fair);
    EXPECT_EQ(thermalStateNamed("CRITICAL"), ThermalState::critical);
}

TEST(ThermalStateNamed, BlanksAreNotTrimmed) {
    EXPECT_FALSE(thermalStateNamed(" serious").has_value());
    EXPECT_FALSE(thermalStateNamed("serious ").has_value());
}

TEST(ThermalStateNamed, EmptyNameIsAbsent) {
    EXPECT_FALSE(thermalStateNamed("").has_value());
}

TEST(ThermalStateNamed, UnknownNameIsAbsent) {
    EXPECT_FALSE(thermalStateNamed("hot").has_value());
    EXPECT_FALSE(thermalStateNamed("critical!").has_value());
}

TEST(ThermalStateNamed, NonAsciiLookalikesAreAbsent) {
    // Capital I with dot above lower-cases to "i" plus a combining dot: never "serious".
    EXPECT_FALSE(thermalStateNamed("SER\xC4\xB0OUS").has_value());
    // Fullwidth letters and the Kelvin sign.
    EXPECT_FALSE(thermalStateNamed("\xEF\xBC\xA6\xEF\xBC\xA1\xEF\xBC\xA9\xEF\xBC\xB2").has_value());
    EXPECT_FALSE(thermalStateNamed("\xE2\x84\xAA").has_value());
}

TEST(ThermalStateNamed, InvalidUtf8IsAbsent) {
    EXPECT_FALSE(thermalStateNamed("fair\xFF").has_value());
    EXPECT_FALSE(thermalStateNamed("\xC3").has_value());
    EXPECT_FALSE(thermalStateNamed(std::string("fa\0ir", 5)).has_value());
}

TEST(ThermalStateName, NamesRoundTrip) {
    for (auto state : {ThermalState::nominal, ThermalState::fair, ThermalState::serious,
                       ThermalState::critical}) {
        const auto name = thermalStateName(state);
        ASSERT_TRUE(name.has_value());
        EXPECT_EQ(thermalStateNamed(*name), state);
    }
}

TEST(ThermalSensor, ClosureReturningNothingReadsNothing) {
    ThermalSensor sensor([] { return std::optional<ThermalState>{}; });
    EXPECT_FALSE(sensor.readC().has_value());
}

TEST(ThermalSensor, ForcedCriticalReads108) {
    ThermalSensor sensor([] { return std::optional<ThermalState>{ThermalState::critical}; });
    EXPECT_EQ(sensor.readC(), 108.0);
}

TEST(ThermalSensor, ClosureIsReplaceable) {
    ThermalSensor sensor([] { return std::optional<ThermalState>{ThermalState::nominal}; });
    EXPECT_EQ(sensor.readC(), 55.0);
    sensor.state = [] { return std::optional<ThermalState>{ThermalState::fair}; };
    EXPECT_EQ(sensor.readC(), 78.0);
}

TEST(ThermalSensor, UnknownStateReadsNothing) {
    ThermalSensor sensor([] { return std::optional<ThermalState>{static_cast<ThermalState>(9)}; });
    EXPECT_FALSE(sensor.readC().has_value());
}

}  // namespace
}  // namespace velmora
