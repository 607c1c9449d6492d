#include "policy/mono_time.hpp"

#include <gtest/gtest.h>

#include <chrono>
#include <cmath>

namespace velmora {
namespace {

TEST(MonoTime, DifferencesAndSumsAreSeconds) {
    const MonoTime t = MonoTime::fromSeconds(100);
    EXPECT_DOUBLE_EQ(((t + Seconds(2.5)) - t).count(), 2.5);
    EXPECT_DOUBLE_EQ((t - (t - Seconds(1.25))).count(), 1.25);
    EXPECT_DOUBLE_EQ((t + MonoTime::Seconds(0.75)).seconds(), 100.75);
    EXPECT_DOUBLE_EQ((t + std::chrono::milliseconds(250)).seconds(), 100.25);
    EXPECT_LT(t, t + std::chrono::milliseconds(1));
}

TEST(MonoTime, NowNeverGoesBack) {
    MonoTime previous = MonoTime::now();
    for (int i = 0; i < 1000; ++i) {
        const MonoTime next = MonoTime::now();
        EXPECT_GE(next, previous);
        previous = next;
    }
}

TEST(MonoTime, TheDistantPastIsFarBeforeNowAndStillFinite) {
    const double gap = (MonoTime::now() - MonoTime::distantPast()).count();
    EXPECT_GT(gap, 1.0e11);
    EXPECT_TRUE(std::isfinite(gap));
}

}  // namespace
}  // namespace velmora
