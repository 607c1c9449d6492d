#include "app/manual_loop.hpp"

#include <gtest/gtest.h>

#include <string>
#include <vector>

namespace velmora::testing {
namespace {

TEST(ManualLoop, RunsDueWorkInTimeOrderAtItsOwnInstant) {
    ManualLoop loop(100);
    std::vector<std::string> ran;
    loop.postAfter(0.5, [&] { ran.push_back("half@" + std::to_string(loop.now().seconds())); });
    loop.post([&] { ran.push_back("post"); });
    const auto timer = loop.startRepeating(0.25, [&] { ran.push_back("tick"); });
    loop.advance(0.6);
    // At the same instant, what was scheduled first runs first.
    EXPECT_EQ(ran, (std::vector<std::string>{"post", "tick", "half@100.500000", "tick"}));
    EXPECT_DOUBLE_EQ(loop.now().seconds(), 100.6);
    loop.stop(timer);
    loop.advance(10);
    EXPECT_EQ(ran.size(), 4U);
    EXPECT_EQ(loop.pending(), 0U);
}

TEST(ManualLoop, NothingRunsBeforeTheClockMoves) {
    ManualLoop loop;
    bool ran = false;
    loop.postAfter(1, [&] { ran = true; });
    loop.runDue();
    EXPECT_FALSE(ran);
    loop.advance(1);
    EXPECT_TRUE(ran);
}

}  // namespace
}  // namespace velmora::testing
