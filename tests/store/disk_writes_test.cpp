#include "store/disk_writes.hpp"

#include "temp_dir.hpp"

#include <gtest/gtest.h>

#include <sys/wait.h>
#include <unistd.h>

namespace velmora {
namespace {

using testing::entriesOf;
using testing::readText;
using testing::TempDir;
using testing::writeText;

namespace fs = std::filesystem;

constexpr fs::perms othersAndGroup = fs::perms::group_all | fs::perms::others_all;

TEST(CreateDirectories, LastDirectoryIsPrivateToTheUser) {
    const TempDir tmp;
    ASSERT_FALSE(createDirectories(tmp / "a/b/data"));
    EXPECT_EQ(fs::status(tmp / "a/b/data").permissions(), fs::perms::owner_all);
}

TEST(CreateDirectories, ExistingDirectoryIsLeftAsItIs) {
    const TempDir tmp;
    fs::create_directory(tmp / "d");
    fs::permissions(tmp / "d", fs::perms::owner_all | fs::perms::group_read);
    ASSERT_FALSE(createDirectories(tmp / "d"));
    EXPECT_EQ(fs::status(tmp / "d").permissions(), fs::perms::owner_all | fs::perms::group_read);
}

TEST(ReplaceFileAtomically, WritesAPrivateFileAndLeavesNoTemporary) {
    const TempDir tmp;
    ASSERT_FALSE(replaceFileAtomically(tmp / "f", "new"));
    EXPECT_EQ(readText(tmp / "f"), "new");
    EXPECT_EQ(fs::status(tmp / "f").permissions() & othersAndGroup, fs::perms::none);
    EXPECT_EQ(entriesOf(tmp.path()), std::vector<std::string>{"f"});
}

TEST(ReplaceFileAtomically, SymbolicLinkAtTheTargetIsReplacedNotFollowed) {
    const TempDir tmp;
    writeText(tmp / "victim", "precious");
    fs::create_symlink(tmp / "victim", tmp / "f");
    ASSERT_FALSE(replaceFileAtomically(tmp / "f", "new"));
    EXPECT_EQ(readText(tmp / "victim"), "precious");
    EXPECT_FALSE(fs::is_symlink(tmp / "f"));
    EXPECT_EQ(readText(tmp / "f"), "new");
}

TEST(RemoveStrayTemporaries, RemovesThoseOfDeadProcessesOnly) {
    const TempDir tmp;
    // A process id that is certainly gone: a child that has been reaped.
    const pid_t child = ::fork();
    if (child == 0) ::_exit(0);
    ASSERT_GT(child, 0);
    ::waitpid(child, nullptr, 0);
    const std::string dead = std::to_string(child);
    const std::string alive = std::to_string(::getpid());
    writeText(tmp / (".settings.json.tmp-" + dead + "-0"), "{");
    writeText(tmp / (".auto-shutdown.marker.tmp-" + dead + "-3"), "");
    writeText(tmp / (".settings.json.tmp-" + alive + "-1"), "{");
    writeText(tmp / ".other.tmp-1-1", "not ours");
    writeText(tmp / "settings.json", "{}");

    EXPECT_EQ(removeStrayTemporaries(tmp.path()), 2);
    EXPECT_EQ(entriesOf(tmp.path()),
              (std::vector<std::string>{".other.tmp-1-1", ".settings.json.tmp-" + alive + "-1",
                                        "settings.json"}));
}

}  // namespace
}  // namespace velmora
