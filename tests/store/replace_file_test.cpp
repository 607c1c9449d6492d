#include "os/replace_file.hpp"

#include "temp_dir.hpp"

#include <gtest/gtest.h>
#include <sys/stat.h>
#include <sys/wait.h>
#include <unistd.h>

#include <cerrno>

namespace velmora {
namespace {

using testing::entriesOf;
using testing::readText;
using testing::TempDir;
using testing::writeText;

namespace fs = std::filesystem;

// The umask in force, read without changing it for good.
mode_t currentUmask() {
    const mode_t mask = ::umask(0);
    ::umask(mask);
    return mask;
}

pid_t goneProcess() {
    const pid_t child = ::fork();
    if (child == 0) ::_exit(0);
    ::waitpid(child, nullptr, 0);
    return child;
}

TEST(ReplaceFile, AFileOthersMayReadGetsTheModeAskedFor) {
    const TempDir tmp;
    ASSERT_FALSE(replaceFile(tmp / "entry.desktop", "[Desktop Entry]\n", {.mode = 0644}));
    const auto expected = static_cast<fs::perms>(0644 & ~currentUmask());
    EXPECT_EQ(fs::status(tmp / "entry.desktop").permissions(), expected);
    EXPECT_EQ(readText(tmp / "entry.desktop"), "[Desktop Entry]\n");
}

TEST(ReplaceFile, ANonDurableWriteReplacesTheOldContentsAndLeavesNoTemporary) {
    const TempDir tmp;
    writeText(tmp / "velmora.prom", "old");
    ASSERT_FALSE(replaceFile(tmp / "velmora.prom", "new", {.mode = 0644, .durable = false}));
    EXPECT_EQ(readText(tmp / "velmora.prom"), "new");
    EXPECT_EQ(entriesOf(tmp.path()), std::vector<std::string>{"velmora.prom"});
}

TEST(ReplaceFile, AMissingFolderIsNamedInTheFailure) {
    const TempDir tmp;
    const auto failed = replaceFile(tmp / "missing" / "f", "x");
    ASSERT_TRUE(failed.has_value());
    EXPECT_EQ(failed->code, ENOENT);
    EXPECT_EQ(failed->path, tmp / "missing");
    EXPECT_EQ(failed->message(), "could not create a temporary file in " +
                                     (tmp / "missing").string() + ": No such file or directory");
}

TEST(ReplaceFile, ADirectoryAtTheTargetFailsAndTheTemporaryIsRemoved) {
    const TempDir tmp;
    fs::create_directories(tmp / "settings.json" / "inside");
    const auto failed = replaceFile(tmp / "settings.json", "{}");
    ASSERT_TRUE(failed.has_value());
    EXPECT_EQ(failed->action, "could not replace");
    EXPECT_EQ(entriesOf(tmp.path()), std::vector<std::string>{"settings.json"});
}

TEST(TemporaryFileWriter, ReadsTheProcessOnlyFromNamesReplaceFileMakes) {
    EXPECT_EQ(temporaryFileWriter(".settings.json.tmp-4242-7"), 4242);
    EXPECT_EQ(temporaryFileWriter(".velmora.prom.tmp-1-0"), 1);
    EXPECT_FALSE(temporaryFileWriter("settings.json.tmp-4242-7"));
    EXPECT_FALSE(temporaryFileWriter(".settings.json.tmp-4242"));
    EXPECT_FALSE(temporaryFileWriter(".settings.json.tmp-x-1"));
    EXPECT_FALSE(temporaryFileWriter(".settings.json.tmp-0-1"));
}

TEST(RemoveStrayTemporariesOf, RemovesOnlyTheNamedFilesOfGoneProcesses) {
    const TempDir tmp;
    const std::string dead = std::to_string(goneProcess());
    const std::string alive = std::to_string(::getpid());
    writeText(tmp / (".velmora.prom.tmp-" + dead + "-0"), "half");
    writeText(tmp / (".velmora.prom.tmp-" + alive + "-1"), "being written");
    writeText(tmp / (".other.prom.tmp-" + dead + "-2"), "not named");
    writeText(tmp / "velmora.prom", "whole");
    EXPECT_EQ(removeStrayTemporariesOf(tmp.path(), {"velmora.prom"}), 1);
    EXPECT_EQ(entriesOf(tmp.path()),
              (std::vector<std::string>{".other.prom.tmp-" + dead + "-2",
                                        ".velmora.prom.tmp-" + alive + "-1", "velmora.prom"}));
}

}  // namespace
}  // namespace velmora
