#include "store/log_time.hpp"

#include <gtest/gtest.h>

#include <cstdlib>
#include <ctime>
#include <optional>
#include <string>

namespace velmora {
namespace {

// Runs the test body in a fixed time zone and puts the process's own zone back afterwards.
class LogTimeIn : public ::testing::Test {
  protected:
    void useZone(const char* zone) {
        ::setenv("TZ", zone, 1);
        ::tzset();
    }
    void TearDown() override {
        if (saved_) {
            ::setenv("TZ", saved_->c_str(), 1);
        } else {
            ::unsetenv("TZ");
        }
        ::tzset();
    }

  private:
    std::optional<std::string> saved_ =
        std::getenv("TZ") ? std::optional<std::string>(std::getenv("TZ")) : std::nullopt;
};

TEST_F(LogTimeIn, UtcShowsMillisecondsWithoutAZone) {
    useZone("UTC0");
    EXPECT_EQ(formatLogTime(Timestamp::fromSeconds(1794700033.042)), "2026-11-14 23:47:13.042");
}

TEST_F(LogTimeIn, LocalZoneShiftsTheClockAnd24HourFormIsUsed) {
    useZone("XYZ-2");  // two hours east of UTC, no daylight saving
    EXPECT_EQ(formatLogTime(Timestamp::fromSeconds(1794700033.5)), "2026-11-15 01:47:13.500");
    EXPECT_EQ(formatLogTime(Timestamp::fromSeconds(1794700033.5 - 12 * 3600)),
              "2026-11-14 13:47:13.500");
}

TEST_F(LogTimeIn, MillisecondsAreTruncatedNotRounded) {
    useZone("UTC0");
    EXPECT_EQ(formatLogTime(Timestamp::fromSeconds(0.9999)), "1970-01-01 00:00:00.999");
    EXPECT_EQ(formatLogTime(Timestamp::fromSeconds(0.0)), "1970-01-01 00:00:00.000");
}

}  // namespace
}  // namespace velmora
