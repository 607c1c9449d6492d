#include "policy/timestamp.hpp"

#include <gtest/gtest.h>

#include <chrono>
#include <cmath>

namespace velmora {
namespace {

TEST(Timestamp, DifferenceIsSeconds) {
    const auto a = Timestamp::fromSeconds(100.25);
    EXPECT_DOUBLE_EQ(((a + Seconds(1.5)) - a).count(), 1.5);
    EXPECT_DOUBLE_EQ((a - (a - Seconds(0.125))).count(), 0.125);
}

TEST(Timestamp, KeepsSubSecondPrecisionForTodaysInstants) {
    const auto t = Timestamp::fromSeconds(1'800'000'000.0);
    EXPECT_NEAR(((t + std::chrono::milliseconds(1)) - t).count(), 0.001, 1e-6);
}

TEST(Timestamp, DistantPastSubtractsWithoutOverflow) {
    const double gap = (Timestamp::now() - Timestamp::distantPast()).count();
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
