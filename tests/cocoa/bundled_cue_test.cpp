#include <gtest/gtest.h>

#include "actuators/macos/bundled_cue.hpp"
#include "actuators/system_sounder.hpp"

namespace velmora {
namespace {

TEST(BundledCue, TheSystemSoundsOfTheCuesHaveTheApplicationsOwnStandIns) {
    EXPECT_EQ(bundledCueFor("Sosumi"), "alarm");
    EXPECT_EQ(bundledCueFor("Tink"), "tick");
    EXPECT_FALSE(bundledCueFor("Glass").has_value());
    EXPECT_FALSE(bundledCueFor("sosumi").has_value());
}

TEST(BundledCue, EveryNameTheSystemSounderPlaysHasAStandIn) {
    std::vector<std::string> played;
    SystemSounder sounder([&played](const std::string& name) { played.push_back(name); });
    sounder.alarm();
    sounder.urgent();
    sounder.tick();
    ASSERT_EQ(played.size(), 3U);
    for (const auto& name : played)
        EXPECT_TRUE(bundledCueFor(name).has_value()) << name;
}

}  // namespace
}  // namespace velmora
