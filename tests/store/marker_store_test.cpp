#include "store/marker_store.hpp"

#include "read_only_dir.hpp"
#include "temp_dir.hpp"

#include <gtest/gtest.h>

#include <cerrno>
#include <cmath>
#include <cstring>

namespace velmora {
namespace {

using testing::entriesOf;
using testing::ReadOnlyDir;
using testing::readText;
using testing::TempDir;
using testing::writeText;

const Marker sample{"2026-11-14T23:47:13Z", 108, "critical thermal state"};

TEST(MarkerStore, UrlIsTheMarkerFileInTheDataDirectory) {
    const TempDir tmp;
    EXPECT_EQ(MarkerStore(tmp.path()).url(), tmp / "auto-shutdown.marker");
}

TEST(MarkerStore, MissingFileReadsAsAbsent) {
    const TempDir tmp;
    EXPECT_FALSE(MarkerStore(tmp.path()).read().has_value());
}

TEST(MarkerStore, EmptyFileReadsAsUnreadablePlaceholder) {
    const TempDir tmp;
    writeText(tmp / "auto-shutdown.marker", "");
    const auto marker = MarkerStore(tmp.path()).read();
    ASSERT_TRUE(marker.has_value());
    EXPECT_EQ(marker->reason, "unreadable marker");
    EXPECT_EQ(marker->peakC, 0);
    EXPECT_EQ(marker->at, "");
}

TEST(MarkerStore, GarbageFileReadsAsUnreadablePlaceholder) {
    const TempDir tmp;
    writeText(tmp / "auto-shutdown.marker", "\x01\xff{garbage");
    EXPECT_EQ(MarkerStore(tmp.path()).read(), unreadableMarker());
}

TEST(MarkerStore, FileMissingAKeyReadsAsUnreadablePlaceholder) {
    const TempDir tmp;
    writeText(tmp / "auto-shutdown.marker", R"({"at":"2026-11-14T23:47:13Z","peakC":108})");
    EXPECT_EQ(MarkerStore(tmp.path()).read(), unreadableMarker());
}

TEST(MarkerStore, DirectoryInPlaceOfTheFileReadsAsUnreadablePlaceholder) {
    const TempDir tmp;
    std::filesystem::create_directory(tmp / "auto-shutdown.marker");
    EXPECT_EQ(MarkerStore(tmp.path()).read(), unreadableMarker());
}

TEST(MarkerStore, WriteThenReadGivesTheMarkerBack) {
    const TempDir tmp;
    const MarkerStore store(tmp / "new" / "data");
    ASSERT_FALSE(store.write(sample).has_value());
    EXPECT_EQ(readText(store.url()), *encodeMarker(sample));
    EXPECT_EQ(store.read(), sample);
}

TEST(MarkerStore, WriteReplacesALongerOldFileCompletely) {
    const TempDir tmp;
    writeText(tmp / "auto-shutdown.marker", std::string(5000, 'x'));
    const MarkerStore store(tmp.path());
    ASSERT_FALSE(store.write(sample).has_value());
    EXPECT_EQ(store.read(), sample);
}

TEST(MarkerStore, ClearRemovesTheFile) {
    const TempDir tmp;
    const MarkerStore store(tmp.path());
    ASSERT_FALSE(store.write(sample).has_value());
    store.clear();
    EXPECT_FALSE(std::filesystem::exists(store.url()));
    EXPECT_FALSE(store.read().has_value());
}

TEST(MarkerStore, ClearOnAMissingFileDoesNothing) {
    const TempDir tmp;
    writeText(tmp / "other", "stays");
    MarkerStore(tmp.path()).clear();
    MarkerStore(tmp / "no" / "such" / "dir").clear();
    EXPECT_EQ(entriesOf(tmp.path()), std::vector<std::string>{"other"});
}

TEST(MarkerStore, InspectTellsWhatWasFoundInsteadOfAMarker) {
    const TempDir tmp;
    const MarkerStore store(tmp.path());
    EXPECT_EQ(store.inspect().problem, "");
    writeText(store.url(), "");
    EXPECT_EQ(store.inspect().problem, "is not a marker: 0 bytes");
    writeText(store.url(), "{\"at\":");
    EXPECT_EQ(store.inspect().problem, "is not a marker: 6 bytes beginning '{\"at\":'");
    EXPECT_FALSE(store.inspect().marker.has_value());
}

TEST(MarkerStore, MarkerWhoseTimeIsNotADateTimeIsNotUsable) {
    const TempDir tmp;
    const MarkerStore store(tmp.path());
    writeText(store.url(), R"({"at":"2026-11-14T23:47:13Z\nforged","peakC":108,"reason":"r"})");
    const auto finding = store.inspect();
    EXPECT_FALSE(finding.marker.has_value());
    EXPECT_EQ(finding.problem,
              "has a time that is not a date-time: '2026-11-14T23:47:13Z\nforged'");
    EXPECT_EQ(store.read(), unreadableMarker());
}

TEST(MarkerStore, SymbolicLinkIsNotFollowedAndClearRemovesOnlyTheLink) {
    const TempDir tmp;
    const MarkerStore store(tmp.path());
    writeText(tmp / "elsewhere", *encodeMarker(sample));
    std::filesystem::create_symlink(tmp / "elsewhere", store.url());
    EXPECT_EQ(store.inspect().problem, "is a symbolic link");
    store.clear();
    EXPECT_EQ(entriesOf(tmp.path()), std::vector<std::string>{"elsewhere"});
}

TEST(MarkerStore, FileLargerThanTheCapIsNotRead) {
    const TempDir tmp;
    const MarkerStore store(tmp.path());
    writeText(store.url(), std::string(MarkerStore::readCap + 1, ' ') + *encodeMarker(sample));
    EXPECT_EQ(store.inspect().problem, "is larger than 4096 bytes");
}

TEST(MarkerStore, WriteLeavesOnlyAPrivateMarker) {
    const TempDir tmp;
    const MarkerStore store(tmp.path());
    ASSERT_FALSE(store.write(sample).has_value());
    EXPECT_EQ(entriesOf(tmp.path()), std::vector<std::string>{"auto-shutdown.marker"});
    EXPECT_EQ(std::filesystem::status(store.url()).permissions(),
              std::filesystem::perms::owner_read | std::filesystem::perms::owner_write);
}

TEST(MarkerStoreFailure, DataDirectoryUnderARegularFileFailsBeforeEncoding) {
    const TempDir tmp;
    writeText(tmp / "plain", "");
    const auto dir = tmp / "plain" / "data";
    const auto error = MarkerStore(dir).write(Marker{"x", std::nan(""), "y"});
    ASSERT_TRUE(error.has_value());
    EXPECT_EQ(error->code, ENOTDIR);
    EXPECT_NE(error->message.find(dir.string()), std::string::npos) << error->message;
    EXPECT_NE(error->message.find(std::strerror(ENOTDIR)), std::string::npos) << error->message;
}

TEST(MarkerStoreFailure, NonFinitePeakWritesNothing) {
    const TempDir tmp;
    const auto error = MarkerStore(tmp.path()).write(Marker{"x", INFINITY, "y"});
    ASSERT_TRUE(error.has_value());
    EXPECT_EQ(error->code, 0);
    EXPECT_TRUE(entriesOf(tmp.path()).empty());
}

TEST(MarkerStoreFailure, DirectoryInPlaceOfTheFileFailsWithTheSystemsMessage) {
    const TempDir tmp;
    std::filesystem::create_directory(tmp / "auto-shutdown.marker");
    const MarkerStore store(tmp.path());
    const auto error = store.write(sample);
    ASSERT_TRUE(error.has_value());
    EXPECT_EQ(error->code, EISDIR);
    EXPECT_NE(error->message.find(store.url().string()), std::string::npos) << error->message;
    EXPECT_NE(error->message.find(std::strerror(EISDIR)), std::string::npos) << error->message;
}

TEST(MarkerStoreFailure, ReadOnlyDirectoryFailsAndCreatesNothing) {
    const TempDir tmp;
    const ReadOnlyDir locked(tmp.path());
    if (!locked.holds()) GTEST_SKIP() << "this machine cannot make a directory refuse writes";
    const auto error = MarkerStore(tmp.path()).write(sample);
    ASSERT_TRUE(error.has_value());
    EXPECT_EQ(error->code, locked.refusal());
    EXPECT_NE(error->message.find(std::strerror(locked.refusal())), std::string::npos);
    EXPECT_TRUE(entriesOf(tmp.path()).empty());
}

}  // namespace
}  // namespace velmora
