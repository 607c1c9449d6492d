#include "os/safe_read.hpp"

#include "temp_dir.hpp"

#include <gtest/gtest.h>

#include <sys/stat.h>

namespace velmora {
namespace {

using testing::TempDir;
using testing::writeText;
using Kind = CappedRead::Kind;

TEST(ReadCappedRegularFile, ReadsASmallRegularFileWhole) {
    const TempDir tmp;
    writeText(tmp / "f", "hello");
    const auto read = readCappedRegularFile(tmp / "f", 10);
    EXPECT_EQ(read.kind, Kind::ok);
    EXPECT_EQ(read.text, "hello");
    EXPECT_TRUE(read.problem.empty());
}

TEST(ReadCappedRegularFile, FileOfExactlyTheCapIsReadAndOneMoreIsRefused) {
    const TempDir tmp;
    writeText(tmp / "f", std::string(10, 'x'));
    EXPECT_EQ(readCappedRegularFile(tmp / "f", 10).text, std::string(10, 'x'));
    writeText(tmp / "f", std::string(11, 'x'));
    const auto read = readCappedRegularFile(tmp / "f", 10);
    EXPECT_EQ(read.kind, Kind::refused);
    EXPECT_EQ(read.problem, "is larger than 10 bytes");
}

TEST(ReadCappedRegularFile, MissingFileIsMissingWithoutAProblem) {
    const TempDir tmp;
    const auto read = readCappedRegularFile(tmp / "none", 10);
    EXPECT_EQ(read.kind, Kind::missing);
    EXPECT_TRUE(read.problem.empty());
}

TEST(ReadCappedRegularFile, SymbolicLinkIsRefusedEvenToAGoodFile) {
    const TempDir tmp;
    writeText(tmp / "good", "{}");
    std::filesystem::create_symlink(tmp / "good", tmp / "link");
    const auto read = readCappedRegularFile(tmp / "link", 10);
    EXPECT_EQ(read.kind, Kind::refused);
    EXPECT_EQ(read.problem, "is a symbolic link");
}

TEST(ReadCappedRegularFile, FifoWithoutAWriterIsRefusedAtOnce) {
    const TempDir tmp;
    ASSERT_EQ(::mkfifo((tmp / "fifo").c_str(), 0600), 0);
    const auto read = readCappedRegularFile(tmp / "fifo", 10);
    EXPECT_EQ(read.kind, Kind::refused);
    EXPECT_EQ(read.problem, "is a FIFO");
}

TEST(ReadCappedRegularFile, DevicesAndDirectoriesAreRefused) {
    const TempDir tmp;
    EXPECT_EQ(readCappedRegularFile("/dev/zero", 10).problem, "is a device");
    EXPECT_EQ(readCappedRegularFile(tmp.path(), 10).problem, "is a directory");
}

}  // namespace
}  // namespace velmora
