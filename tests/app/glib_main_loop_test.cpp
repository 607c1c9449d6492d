#include "app/headless/glib_main_loop.hpp"

#include <gtest/gtest.h>

#include <chrono>
#include <string>
#include <thread>
#include <vector>

namespace velmora {
namespace {

using namespace std::chrono_literals;

TEST(GlibMainLoop, PostsRunInOrderOnTheLoop) {
    GlibMainLoop loop;
    std::vector<std::string> ran;
    loop.post([&] { ran.emplace_back("first"); });
    loop.post([&] { ran.emplace_back("second"); });
    loop.post([&] { loop.quit(); });
    loop.run();
    EXPECT_EQ(ran, (std::vector<std::string>{"first", "second"}));
}

TEST(GlibMainLoop, PostFromAnotherThreadReachesTheLoop) {
    GlibMainLoop loop;
    const auto loopThread = std::this_thread::get_id();
    std::thread::id ranOn;
    std::thread worker([&] {
        loop.post([&] {
            ranOn = std::this_thread::get_id();
            loop.quit();
        });
    });
    loop.run();
    worker.join();
    EXPECT_EQ(ranOn, loopThread);
}

TEST(GlibMainLoop, RepeatingTimerRunsUntilStoppedAndOneShotsOnce) {
    GlibMainLoop loop;
    int repeats = 0;
    int once = 0;
    TimerId repeating = 0;
    repeating = loop.startRepeating(1ms, [&] {
        if (++repeats == 3) {
            loop.stop(repeating);
            loop.postAfter(2ms, [&] { loop.quit(); });
        }
    });
    loop.postAfter(0s, [&] { ++once; });
    loop.run();
    EXPECT_EQ(repeats, 3);
    EXPECT_EQ(once, 1);
}

TEST(GlibMainLoop, StoppedDelayedPostNeverRuns) {
    GlibMainLoop loop;
    bool ran = false;
    const auto id = loop.postAfter(1ms, [&] { ran = true; });
    loop.stop(id);
    loop.stop(id);  // unknown by now: ignored
    loop.postAfter(3ms, [&] { loop.quit(); });
    loop.run();
    EXPECT_FALSE(ran);
}

TEST(GlibMainLoop, PosterOutlivingTheLoopDropsItsWork) {
    Post post;
    {
        GlibMainLoop loop;
        post = loop.poster();
        post([&loop] { loop.quit(); });
        loop.run();
    }
    bool ran = false;
    post([&ran] { ran = true; });  // the loop is gone: nothing is queued anywhere
    EXPECT_EQ(g_main_context_pending(g_main_context_default()), FALSE);
    EXPECT_FALSE(ran);
}

}  // namespace
}  // namespace velmora
