#include "app/core/data_dir_check.hpp"

#include <gtest/gtest.h>
#include <sys/stat.h>
#include <unistd.h>

#include <fstream>

#include "support/temp_dir.hpp"

namespace velmora {
namespace {

namespace fs = std::filesystem;

class PrepareDataDir : public ::testing::Test {
  protected:
    testing::TempDir tmp{"datadir"};
    fs::path root = tmp.path();
};

TEST_F(PrepareDataDir, MissingDirectoryIsCreatedPrivate) {
    EXPECT_EQ(prepareDataDir(root / "a" / "data"), std::nullopt);
    EXPECT_EQ(fs::status(root / "a" / "data").permissions(), fs::perms::owner_all);
}

TEST_F(PrepareDataDir, DirectoryOthersMayWriteToIsRefused) {
    const auto dir = root / "shared";
    fs::create_directory(dir);
    ASSERT_EQ(::chmod(dir.c_str(), 01777), 0);
    EXPECT_EQ(prepareDataDir(dir),
              "refusing the data directory " + dir.string() +
                  ": other users may write to it (mode 1777); run 'chmod go-w " + dir.string() +
                  "' or choose a directory of your own with --data-dir");
    ASSERT_EQ(::chmod(dir.c_str(), 0775), 0);
    EXPECT_NE(prepareDataDir(dir), std::nullopt);
    ASSERT_EQ(::chmod(dir.c_str(), 0755), 0);
    EXPECT_EQ(prepareDataDir(dir), std::nullopt);
}

TEST_F(PrepareDataDir, DirectoryOfAnotherUserIsRefused) {
    if (::geteuid() != 0) GTEST_SKIP() << "only root can give a directory to another user";
    const auto dir = root / "foreign";
    fs::create_directory(dir);
    ASSERT_EQ(::chown(dir.c_str(), 65534, 65534), 0);
    const auto refusal = prepareDataDir(dir);
    ASSERT_TRUE(refusal.has_value());
    EXPECT_NE(refusal->find("it belongs to user id 65534, not to you"), std::string::npos);
}

TEST_F(PrepareDataDir, TemporariesOfKilledWritesAreRemoved) {
    // Process id 2^22 + 1 lies above Linux's largest, so no process can have it.
    std::ofstream(root / ".settings.json.tmp-4194305-0") << "{";
    std::ofstream(root / "settings.json") << "{}";
    EXPECT_EQ(prepareDataDir(root), std::nullopt);
    EXPECT_FALSE(fs::exists(root / ".settings.json.tmp-4194305-0"));
    EXPECT_TRUE(fs::exists(root / "settings.json"));
}

TEST_F(PrepareDataDir, DirectoryThatCannotBeCreatedIsLeftToTheLaterReport) {
    std::ofstream(root / "plain") << "x";
    EXPECT_EQ(prepareDataDir(root / "plain" / "data"), std::nullopt);
    EXPECT_NE(dataDirProblem(root / "plain" / "data"), std::nullopt);
}

}  // namespace
}  // namespace velmora
