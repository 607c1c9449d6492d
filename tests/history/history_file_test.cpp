#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <gtest/gtest.h>

#include <algorithm>
#include <cstring>

#include "history/history_test_support.hpp"
#include "support/temp_dir.hpp"

namespace velmora {
namespace {

using testing::fileText;
using testing::kHistoryStart;
using testing::kThisMachine;
using testing::patternSample;
using testing::putText;
using testing::TempDir;
using testing::writeHistory;

namespace fs = std::filesystem;

class HistoryFileTest : public ::testing::Test {
  protected:
    fs::path file() const { return tmp.path() / "history.bin"; }
    fs::path aside() const { return tmp.path() / "history.bad"; }

    /// Opens the directory's history and expects a fresh one after `problem` was logged.
    void expectSetAside(const std::string& problem) {
        auto opened = HistoryFile::open(tmp.path(), kThisMachine);
        ASSERT_EQ(opened.notes.size(), 1U);
        EXPECT_NE(opened.notes.front().find(problem), std::string::npos) << opened.notes.front();
        EXPECT_NE(opened.notes.front().find("set aside as"), std::string::npos);
        ASSERT_TRUE(opened.file);
        EXPECT_TRUE(opened.store->rows().empty());
        struct stat info {};
        ASSERT_EQ(::lstat(file().c_str(), &info), 0);
        EXPECT_TRUE(S_ISREG(info.st_mode));
        EXPECT_EQ(info.st_mode & 0777U, 0600U);
        EXPECT_EQ(static_cast<std::size_t>(info.st_size), history_file::fileBytes());
        EXPECT_TRUE(fs::exists(fs::symlink_status(aside())));
    }

    TempDir tmp{"history"};
};

TEST_F(HistoryFileTest, ANewFileIsPrivateOfFixedSizeAndEmpty) {
    auto opened = HistoryFile::open(tmp.path(), kThisMachine);
    ASSERT_TRUE(opened.file);
    EXPECT_TRUE(opened.notes.empty());
    EXPECT_TRUE(opened.store->rows().empty());
    struct stat info {};
    ASSERT_EQ(::stat(file().c_str(), &info), 0);
    EXPECT_EQ(info.st_mode & 0777U, 0600U);
    EXPECT_EQ(static_cast<std::size_t>(info.st_size), history_file::fileBytes());
    EXPECT_LE(history_file::fileBytes(), 1024U * 1024U);
}

TEST_F(HistoryFileTest, WrittenPointsComeBackWithTheirFiguresAndTheFileKeepsItsSize) {
    writeHistory(tmp.path(), kHistoryStart, 2000);
    const auto size = fs::file_size(file());
    auto opened = HistoryFile::open(tmp.path(), kThisMachine);
    ASSERT_TRUE(opened.file);
    EXPECT_TRUE(opened.notes.empty());
    const auto rows = opened.store->rows();
    ASSERT_FALSE(rows.empty());
    EXPECT_EQ(rows.back().time, kHistoryStart + 1999) << "the open point is kept too";
    EXPECT_EQ(rows.front().time, kHistoryStart);
    const auto& last = rows.back();
    EXPECT_DOUBLE_EQ(last.figure(HistorySeries::hottest)->mean,
                     *patternSample(kHistoryStart + 1999).hottestC);
    EXPECT_EQ(fs::file_size(file()), size);
}

TEST_F(HistoryFileTest, ASecondRunContinuesTheFirstInTheSameFile) {
    writeHistory(tmp.path(), kHistoryStart, 100);
    writeHistory(tmp.path(), kHistoryStart + 3600, 100);
    const auto reading = readHistory(tmp.path());
    ASSERT_TRUE(reading.store) << reading.problem;
    const auto rows = reading.store->rows();
    ASSERT_EQ(rows.size(), 200U);
    EXPECT_EQ(rows[99].time, kHistoryStart + 99);
    EXPECT_EQ(rows[100].time, kHistoryStart + 3600);
}

TEST_F(HistoryFileTest, ATornRecordIsLeftOutAndEveryOtherPointIsKept) {
    writeHistory(tmp.path(), kHistoryStart, 50);
    auto bytes = fileText(file());
    // Slot 10 of the 1 s tier holds point 11: spoil half of it, as a torn write would.
    const auto at = history_file::headerBytes + history_file::recordBytes * 10 + 40;
    std::fill_n(bytes.begin() + static_cast<std::ptrdiff_t>(at), 60, '\x5a');
    putText(file(), bytes);
    auto opened = HistoryFile::open(tmp.path(), kThisMachine);
    EXPECT_TRUE(opened.notes.empty()) << "a torn record is not a damaged file";
    const auto rows = opened.store->rows();
    ASSERT_EQ(rows.size(), 49U) << "every second but the torn one";
    EXPECT_TRUE(std::none_of(rows.begin(), rows.end(), [](const HistoryRow& r) {
        return r.resolution == 1 && r.time == kHistoryStart + 10;
    }));
    for (std::size_t i = 1; i < rows.size(); ++i)
        EXPECT_LT(rows[i - 1].time, rows[i].time);
}

TEST_F(HistoryFileTest, GarbageIsSetAsideAndAFreshHistoryStarts) {
    putText(file(), std::string(history_file::fileBytes(), 'g'));
    expectSetAside("is not a history file");
    EXPECT_EQ(fileText(aside()).substr(0, 4), "gggg");
}

TEST_F(HistoryFileTest, ATruncatedFileIsSetAside) {
    writeHistory(tmp.path(), kHistoryStart, 20);
    fs::resize_file(file(), history_file::fileBytes() / 2);
    expectSetAside("is truncated");
}

TEST_F(HistoryFileTest, AZeroLengthFileIsSetAside) {
    putText(file(), "");
    expectSetAside("is empty");
}

TEST_F(HistoryFileTest, AnOversizedFileIsSetAsideWithoutBeingReadWhole) {
    writeHistory(tmp.path(), kHistoryStart, 20);
    fs::resize_file(file(), 1024U * 1024U * 1024U);  // sparse: a gigabyte that costs nothing
    expectSetAside("is larger than");
}

TEST_F(HistoryFileTest, ASymbolicLinkIsNeverFollowedAndIsSetAside) {
    const auto target = tmp.path() / "elsewhere";
    putText(target, "precious");
    fs::create_symlink(target, file());
    expectSetAside("is a symbolic link");
    EXPECT_EQ(fileText(target), "precious");
    EXPECT_TRUE(fs::is_symlink(aside()));
}

TEST_F(HistoryFileTest, AFifoNeverBlocksAndIsSetAside) {
    ASSERT_EQ(::mkfifo(file().c_str(), 0600), 0);
    expectSetAside("is a FIFO");
}

TEST_F(HistoryFileTest, AFileOfAnotherMachineIsSetAside) {
    writeHistory(tmp.path(), kHistoryStart, 20, kThisMachine + 1);
    expectSetAside("belongs to another machine");
}

TEST_F(HistoryFileTest, AFileOfAnotherVersionIsSetAside) {
    writeHistory(tmp.path(), kHistoryStart, 20);
    auto bytes = fileText(file());
    const std::uint32_t other = history_file::version + 1;
    std::memcpy(bytes.data() + 8, &other, sizeof other);
    putText(file(), bytes);
    expectSetAside("is of version 2, not 1");
}

TEST_F(HistoryFileTest, AFileWithTheOtherByteOrderIsSetAside) {
    writeHistory(tmp.path(), kHistoryStart, 20);
    auto bytes = fileText(file());
    // As a machine of the other byte order writes them: every header number reversed.
    for (std::size_t at = 8; at < 16; at += 4)
        std::reverse(bytes.begin() + static_cast<std::ptrdiff_t>(at),
                     bytes.begin() + static_cast<std::ptrdiff_t>(at + 4));
    putText(file(), bytes);
    expectSetAside("was written with the other byte order");
}

TEST_F(HistoryFileTest, ADamagedHeaderIsSetAside) {
    writeHistory(tmp.path(), kHistoryStart, 20);
    auto bytes = fileText(file());
    bytes[20] = static_cast<char>(bytes[20] ^ 0x01);
    putText(file(), bytes);
    expectSetAside("has a damaged header");
}

TEST_F(HistoryFileTest, OnlyOneSetAsideFileIsKept) {
    putText(file(), "first");
    static_cast<void>(HistoryFile::open(tmp.path(), kThisMachine));
    writeHistory(tmp.path(), kHistoryStart, 5, kThisMachine + 7);
    expectSetAside("belongs to another machine");
    EXPECT_NE(fileText(aside()), "first");
    EXPECT_EQ(fileText(aside()).size(), history_file::fileBytes());
    std::size_t entries = 0;
    for ([[maybe_unused]] const auto& entry : fs::directory_iterator(tmp.path()))
        ++entries;
    EXPECT_EQ(entries, 2U);
}

TEST_F(HistoryFileTest, ADirectoryInTheWayKeepsTheHistoryInMemoryAndSaysSo) {
    fs::create_directories(file() / "inside");
    putText(aside(), "an older one");
    auto opened = HistoryFile::open(tmp.path(), kThisMachine);
    ASSERT_EQ(opened.notes.size(), 1U);
    EXPECT_NE(opened.notes.front().find("is a directory"), std::string::npos)
        << opened.notes.front();
    EXPECT_NE(opened.notes.front().find("memory only"), std::string::npos);
    EXPECT_FALSE(opened.file);
    ASSERT_TRUE(opened.store);
}

TEST_F(HistoryFileTest, TheExportReaderRefusesHostileFilesWithoutTouchingThem) {
    const auto target = tmp.path() / "elsewhere";
    putText(target, "precious");
    fs::create_symlink(target, file());
    const auto reading = readHistory(tmp.path());
    EXPECT_FALSE(reading.store);
    EXPECT_NE(reading.problem.find("is a symbolic link"), std::string::npos);
    EXPECT_TRUE(fs::is_symlink(file()));
    EXPECT_FALSE(fs::exists(fs::symlink_status(aside())));
}

TEST_F(HistoryFileTest, TheExportReaderReadsAnotherMachinesFile) {
    writeHistory(tmp.path(), kHistoryStart, 30, kThisMachine + 1);
    const auto reading = readHistory(tmp.path());
    ASSERT_TRUE(reading.store) << reading.problem;
    EXPECT_EQ(reading.store->rows().size(), 30U);
}

TEST_F(HistoryFileTest, AClockStepBackIsKeptInOrderAcrossARestart) {
    writeHistory(tmp.path(), kHistoryStart, 120);
    writeHistory(tmp.path(), kHistoryStart + 60, 30);  // the clock was set back a minute
    const auto reading = readHistory(tmp.path());
    ASSERT_TRUE(reading.store) << reading.problem;
    const auto rows = reading.store->rows();
    for (std::size_t i = 1; i < rows.size(); ++i)
        ASSERT_LT(rows[i - 1].time, rows[i].time) << "row " << i;
    EXPECT_EQ(rows.back().time, kHistoryStart + 89);
    EXPECT_EQ(rows.size(), 90U);
}

TEST(HistoryMachine, TheIdentityComesFromTheMachineIdBelowTheRoot) {
    TempDir a{"machine"};
    TempDir b{"machine"};
    fs::create_directories(a.path() / "etc");
    fs::create_directories(b.path() / "etc");
    putText(a.path() / "etc/machine-id", "0123456789abcdef0123456789abcdef\n");
    putText(b.path() / "etc/machine-id", "fedcba9876543210fedcba9876543210\n");
    EXPECT_NE(machineIdentity(a.path().string()), machineIdentity(b.path().string()));
    EXPECT_EQ(machineIdentity(a.path().string()), machineIdentity(a.path().string()));
}

TEST(HistoryCrc, MatchesTheStandardCheckValue) {
    EXPECT_EQ(history_file::crc32("123456789"), 0xCBF43926U);
}

}  // namespace
}  // namespace velmora

namespace velmora {
namespace {

// A record with a valid checksum but a number no writer reaches is left out, not trusted.
TEST(HistoryFileRecords, ANumberNoWriterCouldReachIsLeftOut) {
    testing::TempDir tmp{"history"};
    testing::writeHistory(tmp.path(), testing::kHistoryStart, 3);
    auto bytes = testing::fileText(tmp.path() / "history.bin");
    const auto at = history_file::headerBytes;           // slot 0 of the 1 s tier: point 1
    const std::uint64_t huge = ~std::uint64_t{0} - 899;  // still lands in slot 0
    std::memcpy(bytes.data() + at, &huge, sizeof huge);
    const auto crc = history_file::crc32(std::string_view(bytes).substr(at, 136));
    std::memcpy(bytes.data() + at + 136, &crc, sizeof crc);
    testing::putText(tmp.path() / "history.bin", bytes);
    const auto reading = readHistory(tmp.path());
    ASSERT_TRUE(reading.store) << reading.problem;
    EXPECT_EQ(reading.store->tier(0).pushed(), 2U);
    EXPECT_EQ(reading.store->rows().size(), 3U) << "the 10 s point, then seconds 2 and 3";
}

}  // namespace
}  // namespace velmora
