#include "os/file_change_watch.hpp"

#include <gtest/gtest.h>

#include <atomic>
#include <chrono>
#include <fstream>
#include <thread>

#include "store/temp_dir.hpp"

namespace velmora::testing {
namespace {

using namespace std::chrono_literals;

class FileChangeWatchTest : public ::testing::Test {
  protected:
    bool eventually(const std::function<bool()>& condition, double seconds = 10) {
        const auto until =
            std::chrono::steady_clock::now() + std::chrono::duration<double>(seconds);
        while (std::chrono::steady_clock::now() < until) {
            if (condition()) return true;
            std::this_thread::sleep_for(std::chrono::milliseconds(20));
        }
        return false;
    }

    TempDir dir;
    std::filesystem::path file = dir / "settings.json";
    std::atomic<int> notified{0};
    std::atomic<int> fallbacks{0};
    std::function<void(bool)> count = [this](bool byNotification) {
        ++(byNotification ? notified : fallbacks);
    };
};

TEST_F(FileChangeWatchTest, WritingTheFileNotifies) {
    const FileChangeWatch watch(file, count, {60s, 60s});
    EXPECT_TRUE(watch.notifying());
    writeText(file, "{}");
    EXPECT_TRUE(eventually([&] { return notified > 0; }));
}

TEST_F(FileChangeWatchTest, OtherFilesOfTheFolderDoNotNotify) {
    const FileChangeWatch watch(file, count, {50ms, 60s});
    writeText(dir / "heat.log", "a line\n");
    // The second fallback after the write began its wait after the write, so by then the
    // watch has read the log's event and let it pass.
    const int before = fallbacks;
    ASSERT_TRUE(eventually([&] { return fallbacks >= before + 2; }));
    EXPECT_EQ(notified, 0);
    writeText(file, "{}");
    EXPECT_TRUE(eventually([&] { return notified > 0; }));
}

TEST_F(FileChangeWatchTest, RewritingTheFileInPlaceNotifies) {
    writeText(file, "{}");
    const FileChangeWatch watch(file, count, {60s, 60s});
    std::ofstream(file, std::ios::trunc) << R"({"autoShutdown":true})";
    EXPECT_TRUE(eventually([&] { return notified > 0; }));
}

TEST_F(FileChangeWatchTest, AFileRenamedIntoPlaceIsWatchedInItsTurn) {
    writeText(file, "{}");
    const FileChangeWatch watch(file, count, {60s, 60s});
    writeText(dir / "settings.json.tmp", "{}");
    std::filesystem::rename(dir / "settings.json.tmp", file);
    ASSERT_TRUE(eventually([&] { return notified > 0; }));
    const int before = notified;
    std::ofstream(file, std::ios::trunc) << R"({"autoShutdown":true})";
    EXPECT_TRUE(eventually([&] { return notified > before; }));
}

// The log is opened, written and closed line by line beside the settings: those lines must
// not wake the watch at all, or an idle watchdog wakes once per line it logs.
TEST_F(FileChangeWatchTest, LinesWrittenToOtherFilesOfTheFolderDoNotWakeIt) {
    writeText(dir / "heat.log", "");
    writeText(dir / "heat.log.1", "");
    const FileChangeWatch watch(file, count, {60s, 60s});
    for (int line = 0; line < 40; ++line) {
        // Two files in turn, so that the kernel cannot merge the events into one, and paced
        // as a logger's lines are, so that the thread could see each on its own.
        std::ofstream(dir / (line % 2 == 0 ? "heat.log" : "heat.log.1"), std::ios::app)
            << "a line\n";
        std::this_thread::sleep_for(5ms);
    }
    // The settings file changing afterwards proves that the thread has read as far.
    writeText(file, "{}");
    ASSERT_TRUE(eventually([&] { return notified > 0; }));
    EXPECT_EQ(fallbacks, 0);
    EXPECT_LE(watch.wakeups(), 3U);
}

TEST_F(FileChangeWatchTest, FallsBackToPollingWhileTheFolderIsGoneAndWatchesItAgain) {
    const FileChangeWatch watch(file, count, {60s, 100ms});
    std::filesystem::remove_all(dir.path());
    ASSERT_TRUE(eventually([&] { return !watch.notifying(); }));
    EXPECT_TRUE(eventually([&] { return fallbacks > 0; }));
    std::filesystem::create_directories(dir.path());
    EXPECT_TRUE(eventually([&] { return watch.notifying(); }));
    const int before = notified;
    writeText(file, "{}");
    EXPECT_TRUE(eventually([&] { return notified > before; }));
}

TEST_F(FileChangeWatchTest, FallbackRunsWhileNothingHappens) {
    const FileChangeWatch watch(file, count, {50ms, 50ms});
    EXPECT_TRUE(eventually([&] { return fallbacks >= 2; }));
    EXPECT_EQ(notified, 0);
}

}  // namespace
}  // namespace velmora::testing
