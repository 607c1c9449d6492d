#include "app/core/process_setup.hpp"

#include <gtest/gtest.h>

#include <sys/resource.h>
#include <unistd.h>

#include <csignal>
#include <cstdio>

namespace velmora {
namespace {

TEST(ProcessSetup, ClosedPipeAndFileSizeLimitNoLongerKill) {
    EXPECT_FALSE(prepareProcess().has_value());
    struct sigaction action {};
    ASSERT_EQ(::sigaction(SIGPIPE, nullptr, &action), 0);
    EXPECT_EQ(action.sa_handler, SIG_IGN);
    ASSERT_EQ(::sigaction(SIGXFSZ, nullptr, &action), 0);
    EXPECT_EQ(action.sa_handler, SIG_IGN);
    int ends[2];
    ASSERT_EQ(::pipe(ends), 0);
    ::close(ends[0]);
    EXPECT_EQ(::write(ends[1], "x", 1), -1);  // the process is still here to see the error
    EXPECT_EQ(errno, EPIPE);
    ::close(ends[1]);
}

TEST(ProcessSetup, RaisesTheSoftDescriptorLimitToTheHardOne) {
    rlimit limit{};
    ASSERT_EQ(::getrlimit(RLIMIT_NOFILE, &limit), 0);
    if (limit.rlim_max < 64) GTEST_SKIP() << "hard descriptor limit too low to lower the soft one";
    const rlimit lowered{64, limit.rlim_max};
    ASSERT_EQ(::setrlimit(RLIMIT_NOFILE, &lowered), 0);
    EXPECT_FALSE(prepareProcess().has_value());
    rlimit after{};
    ASSERT_EQ(::getrlimit(RLIMIT_NOFILE, &after), 0);
    EXPECT_EQ(after.rlim_cur, limit.rlim_max);
}

}  // namespace
}  // namespace velmora
