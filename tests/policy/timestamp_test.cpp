#include "policy/timestamp.hpp"

#include <gtest/gtest.h>

#include <cmath>

namespace velmora {
namespace {

TEST(Timestamp, DifferenceIsSeconds) {
    const auto a = Timestamp::fromSeconds(100.25);
    EXPECT_DOUBLE_EQ((a + 1.5) - a, 1.5);
    EXPECT_DOUBLE_EQ(a - (a - 0.125), 0.125);
}

TEST(Timestamp, KeepsSubSecondPrecisionForTodaysInstants) {
    const auto t = Timestamp::fromSeconds(1'800'000'000.0);
    EXPECT_NEAR((t + 0.001) - t, 0.001, 1e-6);
}

TEST(Timestamp, DistantPastSubtractsWithoutOverflow) {
    const double gap = Timestamp::now() - Timestamp::distantPast();
    EXPECT_TRUE(std::isfinite(gap));
    EXPECT_GT(gap, 6.0e10);
    EXPECT_LT(Timestamp::distantPast(), Timestamp::fromSeconds(0));
}

TEST(Timestamp, NowIsAfterTheEpochAndMovesForward) {
    const auto first = Timestamp::now();
    const auto second = Timestamp::now();
    EXPECT_GT(first.secondsSinceEpoch, 1.6e9);
    EXPECT_LE(first, second);
}

}  // namespace
}  // namespace velmora
