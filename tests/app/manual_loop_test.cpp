#include "app/manual_loop.hpp"

#include <gtest/gtest.h>

#include <chrono>
#include <string>
#include <vector>

namespace velmora::testing {
namespace {

using namespace std::chrono_literals;

TEST(ManualLoop, RunsDueWorkInTimeOrderAtItsOwnInstant) {
    ManualLoop loop(100);
    std::vector<std::string> ran;
    loop.postAfter(500ms, [&] { ran.push_back("half@" + std::to_string(loop.now().seconds())); });
    loop.post([&] { ran.push_back("post"); });
    const auto timer = loop.startRepeating(250ms, [&] { ran.push_back("tick"); });
    loop.advance(600ms);
    // At the same instant, what was scheduled first runs first.
    EXPECT_EQ(ran, (std::vector<std::string>{"post", "tick", "half@100.500000", "tick"}));
    EXPECT_DOUBLE_EQ(loop.now().seconds(), 100.6);
    loop.stop(timer);
    loop.advance(10s);
    EXPECT_EQ(ran.size(), 4U);
    EXPECT_EQ(loop.pending(), 0U);
}

TEST(ManualLoop, NothingRunsBeforeTheClockMoves) {
    ManualLoop loop;
    bool ran = false;
    loop.postAfter(1s, [&] { ran = true; });
    loop.runDue();
    EXPECT_FALSE(ran);
    loop.advance(1s);
    EXPECT_TRUE(ran);
}

}  // namespace
}  // namespace velmora::testing
