#include "app/core/token.hpp"

#include <gtest/gtest.h>

#include <regex>

namespace velmora {
namespace {

TEST(LaunchToken, IsAnUpperCaseVersion4Uuid) {
    const std::regex form("[0-9A-F]{8}-[0-9A-F]{4}-4[0-9A-F]{3}-[89AB][0-9A-F]{3}-[0-9A-F]{12}");
    for (int i = 0; i < 20; ++i) {
        const auto token = makeLaunchToken();
        EXPECT_EQ(token.size(), 36U);
        EXPECT_TRUE(std::regex_match(token, form)) << token;
    }
}

TEST(LaunchToken, EveryLaunchGetsANewOne) {
    EXPECT_NE(makeLaunchToken(), makeLaunchToken());
}

}  // namespace
}  // namespace velmora
