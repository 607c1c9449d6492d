#include "store/file_logger.hpp"

#include "read_only_dir.hpp"
#include "temp_dir.hpp"

#include <gtest/gtest.h>

namespace velmora {
namespace {

using testing::entriesOf;
using testing::linesOf;
using testing::ReadOnlyDir;
using testing::readText;
using testing::TempDir;
using testing::writeText;

bool endsWith(const std::string& text, const std::string& tail) {
    return text.size() >= tail.size() &&
           text.compare(text.size() - tail.size(), tail.size(), tail) == 0;
}

TEST(FileLoggerFailure, DirectoryThatCannotBeCreatedDropsEntriesSilently) {
    const TempDir tmp;
    writeText(tmp / "plain", "untouched");
    {
        FileLogger logger(tmp / "plain" / "data");
        logger.log("lost");
        logger.drain();
        logger.log("lost too");
    }
    EXPECT_EQ(readText(tmp / "plain"), "untouched");
    EXPECT_EQ(entriesOf(tmp.path()), std::vector<std::string>{"plain"});
}

TEST(FileLoggerFailure, DeletedDirectoryIsCreatedAgainPrivateAndLoggingGoesOn) {
    const TempDir tmp;
    const auto dir = tmp / "data";
    FileLogger logger(dir);
    logger.log("before");
    logger.drain();
    ASSERT_EQ(linesOf(readText(dir / "heat.log")).size(), 1U);

    std::filesystem::remove_all(dir);
    logger.log("while gone");
    logger.drain();
    const auto lines = linesOf(readText(dir / "heat.log"));
    ASSERT_EQ(lines.size(), 1U);
    EXPECT_TRUE(endsWith(lines[0], " while gone")) << lines[0];
    EXPECT_EQ(std::filesystem::status(dir).permissions(), std::filesystem::perms::owner_all);
}

TEST(FileLoggerFailure, ReadOnlyDirectoryDropsEntriesSilently) {
    const TempDir tmp;
    const ReadOnlyDir locked(tmp.path());
    if (!locked.holds()) GTEST_SKIP() << "this machine cannot make a directory refuse writes";
    {
        FileLogger logger(tmp.path());
        logger.log("nowhere to go");
    }
    EXPECT_TRUE(entriesOf(tmp.path()).empty());
}

TEST(FileLoggerFailure, LogThatCannotBeOpenedDropsEntriesAndStaysAsItWas) {
    const TempDir tmp;
    std::filesystem::create_directory(tmp / "heat.log");
    {
        FileLogger logger(tmp.path());
        logger.log("dropped");
    }
    EXPECT_TRUE(std::filesystem::is_directory(tmp / "heat.log"));
    EXPECT_TRUE(entriesOf(tmp / "heat.log").empty());
}

}  // namespace
}  // namespace velmora
