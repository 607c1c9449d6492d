#include "store/file_logger.hpp"

#include "store/log_time.hpp"
#include "temp_dir.hpp"

#include <gtest/gtest.h>

#include <optional>
#include <string>
#include <string_view>
#include <thread>

namespace velmora {
namespace {

using testing::linesOf;
using testing::readText;
using testing::TempDir;
using testing::writeText;

// True when `stamp` has the form "yyyy-MM-dd HH:mm:ss.SSS".
bool isLogStamp(std::string_view stamp) {
    constexpr std::string_view form = "dddd-dd-dd dd:dd:dd.ddd";
    if (stamp.size() != form.size()) return false;
    for (std::size_t i = 0; i < form.size(); ++i) {
        const bool digit = stamp[i] >= '0' && stamp[i] <= '9';
        if (form[i] == 'd' ? !digit : stamp[i] != form[i]) return false;
    }
    return true;
}

// The message of a log line, or nothing when the line is not timestamp, blank, message.
std::optional<std::string> messageOf(const std::string& line) {
    constexpr std::size_t stampSize = 23;
    if (line.size() <= stampSize || !isLogStamp(line.substr(0, stampSize))) return std::nullopt;
    if (line[stampSize] != ' ') return std::nullopt;
    return line.substr(stampSize + 1);
}

// Logs one message through a logger that is gone, and so has written it, on return.
void logThroughFreshLogger(const std::filesystem::path& dir, std::string_view message) {
    FileLogger logger(dir);
    logger.log(message);
}

TEST(FileLogger, FirstLogOnAnEmptyDirectoryCreatesTheFileWithOneLine) {
    const TempDir tmp;
    {
        FileLogger logger(tmp.path());
        EXPECT_EQ(logger.url(), tmp / "heat.log");
        logger.log("stage-c: countdown reached 0");
    }
    const auto lines = linesOf(readText(tmp / "heat.log"));
    ASSERT_EQ(lines.size(), 1U);
    EXPECT_EQ(messageOf(lines[0]), "stage-c: countdown reached 0");
}

TEST(FileLogger, TimestampIsTheLocalTimeOfTheCall) {
    const TempDir tmp;
    const auto before = formatLogTime(Timestamp::now());
    std::string after;
    {
        FileLogger logger(tmp.path());
        logger.log("x");
        after = formatLogTime(Timestamp::now());
    }
    const std::string stamp = readText(tmp / "heat.log").substr(0, before.size());
    EXPECT_LE(before, stamp);
    EXPECT_LE(stamp, after);
}

TEST(FileLogger, FileJustUnderOneMillionBytesIsKept) {
    const TempDir tmp;
    writeText(tmp / "heat.log", std::string(999'999, 'a'));
    logThroughFreshLogger(tmp.path(), "next");
    const std::string text = readText(tmp / "heat.log");
    EXPECT_EQ(text.substr(0, 999'999), std::string(999'999, 'a'));
    EXPECT_EQ(messageOf(text.substr(999'999, text.size() - 1'000'000)), "next");
    EXPECT_FALSE(std::filesystem::exists(tmp / "heat.log.1"));
}

// At the limit, the launch's first line would pass it and be rotated away from the lines after.
TEST(FileLogger, FileOfExactlyOneMillionBytesIsRotatedBeforeTheFirstEntry) {
    const TempDir tmp;
    const std::string story = std::string(999'999, 'a') + "\n";
    writeText(tmp / "heat.log", story);
    {
        FileLogger logger(tmp.path());
        logger.log("---- launched");
        logger.log("the story goes on");
    }
    EXPECT_EQ(readText(tmp / "heat.log.1"), story);
    const auto lines = linesOf(readText(tmp / "heat.log"));
    ASSERT_EQ(lines.size(), 2U);
    EXPECT_EQ(messageOf(lines[0]), "---- launched");
    EXPECT_EQ(messageOf(lines[1]), "the story goes on");
}

TEST(FileLogger, ALogBegunDuringTheRunSaysWhichOneItContinues) {
    const TempDir tmp;
    const std::string story = std::string(999'000, 'a') + "\n";
    writeText(tmp / "heat.log", story);
    {
        FileLogger logger(tmp.path());
        logger.log(std::string(2'000, 'b'));  // kept: the log was under the limit
        logger.log("after the limit");
    }
    const auto previous = readText(tmp / "heat.log.1");
    EXPECT_EQ(previous.substr(0, story.size()), story);
    EXPECT_EQ(messageOf(linesOf(previous).back()), std::string(2'000, 'b'));
    const auto lines = linesOf(readText(tmp / "heat.log"));
    ASSERT_EQ(lines.size(), 2U);
    EXPECT_EQ(messageOf(lines[0]), "log: continues heat.log.1, which reached 1000000 bytes");
    EXPECT_EQ(messageOf(lines[1]), "after the limit");
}

TEST(FileLogger, FileOfOneMillionAndOneBytesIsRotatedBeforeTheFirstEntry) {
    const TempDir tmp;
    const std::string story = std::string(1'000'000, 'a') + "\n";
    writeText(tmp / "heat.log", story);
    {
        FileLogger logger(tmp.path());
        EXPECT_FALSE(std::filesystem::exists(tmp / "heat.log"));
        EXPECT_EQ(logger.previousUrl(), tmp / "heat.log.1");
        logger.log("fresh start");
    }
    EXPECT_EQ(readText(tmp / "heat.log.1"), story);
    const auto lines = linesOf(readText(tmp / "heat.log"));
    ASSERT_EQ(lines.size(), 1U);
    EXPECT_EQ(messageOf(lines[0]), "fresh start");
}

TEST(FileLogger, RotationReplacesTheGenerationBefore) {
    const TempDir tmp;
    writeText(tmp / "heat.log.1", "oldest\n");
    writeText(tmp / "heat.log", std::string(1'000'001, 'b'));
    logThroughFreshLogger(tmp.path(), "newest");
    EXPECT_EQ(readText(tmp / "heat.log.1"), std::string(1'000'001, 'b'));
    EXPECT_EQ(linesOf(readText(tmp / "heat.log")).size(), 1U);
}

TEST(FileLogger, LogIsRotatedDuringTheRunOnceItPassesTheLimit) {
    const TempDir tmp;
    const std::string line(999, 'c');
    FileLogger logger(tmp.path());
    constexpr int entries = 1'500;  // about 1.5 MB in entries of 1,024 bytes
    for (int i = 0; i < entries; ++i)
        logger.log(line);
    logger.drain();
    const auto text = readText(tmp / "heat.log");
    const auto firstLine = text.substr(0, text.find('\n') + 1);
    EXPECT_EQ(messageOf(firstLine.substr(0, firstLine.size() - 1)),
              "log: continues heat.log.1, which reached 1000000 bytes");
    const auto current = text.size() - firstLine.size();
    const auto previous = std::filesystem::file_size(tmp / "heat.log.1");
    EXPECT_LT(previous, 1'000'000U + 1'024U);
    EXPECT_GE(previous, 1'000'000U);
    EXPECT_EQ(current + previous, entries * 1'024U);  // nothing lost, nothing written twice
}

TEST(FileLogger, ControlCharactersCannotStartALineOfTheirOwn) {
    const TempDir tmp;
    logThroughFreshLogger(tmp.path(),
                          "ui: action 'x\n2026-01-01 00:00:00.000 shutdown: forged\r\x1b[2J'");
    const auto lines = linesOf(readText(tmp / "heat.log"));
    ASSERT_EQ(lines.size(), 1U);
    EXPECT_EQ(messageOf(lines[0]),
              "ui: action 'x\\n2026-01-01 00:00:00.000 shutdown: forged\\r\\x1b[2J'");
}

TEST(FileLogger, SymbolicLinkInTheLogsPlaceIsReplacedNotFollowed) {
    const TempDir tmp;
    writeText(tmp / "victim", "precious\n");
    std::filesystem::create_symlink(tmp / "victim", tmp / "heat.log");
    logThroughFreshLogger(tmp.path(), "hello");
    EXPECT_EQ(readText(tmp / "victim"), "precious\n");
    ASSERT_FALSE(std::filesystem::is_symlink(tmp / "heat.log"));
    const auto lines = linesOf(readText(tmp / "heat.log"));
    ASSERT_EQ(lines.size(), 2U);
    EXPECT_EQ(messageOf(lines[0]), "log: " + (tmp / "heat.log").string() +
                                       " was a symbolic link to " + (tmp / "victim").string() +
                                       "; it was removed and a new log begun");
    EXPECT_EQ(messageOf(lines[1]), "hello");
}

TEST(FileLogger, NewLogIsPrivateToTheUser) {
    const TempDir tmp;
    logThroughFreshLogger(tmp.path(), "x");
    const auto perms = std::filesystem::status(tmp / "heat.log").permissions();
    EXPECT_EQ(perms & (std::filesystem::perms::group_all | std::filesystem::perms::others_all),
              std::filesystem::perms::none);
}

TEST(FileLogger, TwoThreadsLoggingAtOnceGiveWholeLinesInEachThreadsOrder) {
    const TempDir tmp;
    constexpr int perThread = 400;
    const std::string padding(200, '.');
    {
        FileLogger logger(tmp.path());
        auto worker = [&](char name) {
            for (int i = 0; i < perThread; ++i) {
                logger.log(std::string(1, name) + " " + std::to_string(i) + " " + padding);
            }
        };
        std::thread a(worker, 'a');
        std::thread b(worker, 'b');
        a.join();
        b.join();
    }
    int next[2] = {0, 0};
    const auto lines = linesOf(readText(tmp / "heat.log"));
    ASSERT_EQ(lines.size(), 2U * perThread);
    for (const auto& line : lines) {
        const auto message = messageOf(line);
        ASSERT_TRUE(message.has_value()) << line;
        const int who = (*message)[0] == 'a' ? 0 : 1;
        EXPECT_EQ(*message,
                  std::string(1, "ab"[who]) + " " + std::to_string(next[who]++) + " " + padding);
    }
}

TEST(FileLogger, EmptyMessageYieldsTimestampBlankAndLineFeed) {
    const TempDir tmp;
    logThroughFreshLogger(tmp.path(), "");
    const std::string text = readText(tmp / "heat.log");
    ASSERT_EQ(text.size(), 25U);  // "yyyy-MM-dd HH:mm:ss.SSS" + blank + line feed
    EXPECT_EQ(text.substr(23), " \n");
    EXPECT_EQ(messageOf(text.substr(0, 24)), "");
}

TEST(FileLogger, MessageWithLineFeedsStaysOneLineBehindOneTimestamp) {
    const TempDir tmp;
    logThroughFreshLogger(tmp.path(), "first\nsecond");
    const auto lines = linesOf(readText(tmp / "heat.log"));
    ASSERT_EQ(lines.size(), 1U);
    EXPECT_EQ(messageOf(lines[0]), "first\\nsecond");
}

TEST(FileLogger, EntriesAreAppendedToAnExistingLog) {
    const TempDir tmp;
    writeText(tmp / "heat.log", "earlier line\n");
    logThroughFreshLogger(tmp.path(), "later line");
    const auto lines = linesOf(readText(tmp / "heat.log"));
    ASSERT_EQ(lines.size(), 2U);
    EXPECT_EQ(lines[0], "earlier line");
    EXPECT_EQ(messageOf(lines[1]), "later line");
}

TEST(FileLogger, DestructionWritesEveryQueuedEntryInOrder) {
    const TempDir tmp;
    constexpr int count = 2000;
    {
        FileLogger logger(tmp.path());
        for (int i = 0; i < count; ++i)
            logger.log(std::to_string(i));
    }
    const auto lines = linesOf(readText(tmp / "heat.log"));
    ASSERT_EQ(lines.size(), static_cast<std::size_t>(count));
    for (int i = 0; i < count; ++i)
        EXPECT_EQ(messageOf(lines[i]), std::to_string(i));
}

TEST(FileLogger, DrainReturnsOnceEarlierEntriesAreOnDisk) {
    const TempDir tmp;
    FileLogger logger(tmp.path());
    logger.log("one");
    logger.log("two");
    logger.drain();
    const auto lines = linesOf(readText(tmp / "heat.log"));
    ASSERT_EQ(lines.size(), 2U);
    EXPECT_EQ(messageOf(lines[1]), "two");
}

TEST(FileLogger, ConstructorCreatesTheDataDirectory) {
    const TempDir tmp;
    const FileLogger logger(tmp / "a" / "b");
    EXPECT_TRUE(std::filesystem::is_directory(tmp / "a" / "b"));
}

}  // namespace
}  // namespace velmora
