#include "app/linux/autostart.hpp"

#include <gtest/gtest.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <iterator>

#include "os/whole_file.hpp"
#include "tray/tray_support.hpp"

namespace velmora::test {
namespace {

PlatformEnvironment envWith(std::optional<std::string> home, std::optional<std::string> config) {
    PlatformEnvironment env;
    env.home = std::move(home);
    env.xdgConfigHome = std::move(config);
    return env;
}

TEST(Autostart, EntryLivesUnderXdgConfigHomeNamedAfterTheApplication) {
    EXPECT_EQ(autostartEntryPath(envWith("/home/a", "/cfg")),
              std::filesystem::path("/cfg/autostart/org.velmora.heat-monitor.desktop"));
    EXPECT_EQ(autostartEntryPath(envWith("/home/a", std::nullopt)),
              std::filesystem::path("/home/a/.config/autostart/org.velmora.heat-monitor.desktop"));
    // A relative XDG_CONFIG_HOME is invalid and ignored.
    EXPECT_EQ(autostartEntryPath(envWith("/home/a", "cfg")),
              std::filesystem::path("/home/a/.config/autostart/org.velmora.heat-monitor.desktop"));
    EXPECT_EQ(autostartEntryPath(envWith(std::nullopt, std::nullopt)), std::nullopt);
}

TEST(Autostart, ExecArgumentsAreQuotedOnlyWhenNeeded) {
    EXPECT_EQ(desktopExecArgument("/usr/bin/velmora-heat-monitor"),
              "/usr/bin/velmora-heat-monitor");
    EXPECT_EQ(desktopExecArgument("/opt/My Apps/velmora"), "\"/opt/My Apps/velmora\"");
    EXPECT_EQ(desktopExecArgument("/opt/$x"), "\"/opt/\\\\$x\"");
    EXPECT_EQ(desktopExecArgument("/opt/a\\b"), "\"/opt/a\\\\\\\\b\"");
    EXPECT_EQ(desktopExecArgument("/opt/100%"), "/opt/100%%");
}

TEST(Autostart, EnableWritesAnEntryAndDisableRemovesIt) {
    TempDir temp{"tray"};
    const auto entry = temp.path() / "config" / "autostart" / "org.velmora.heat-monitor.desktop";
    EXPECT_FALSE(autostartEnabled(entry));
    ASSERT_EQ(enableAutostart(entry, "/opt/velmora/bin/velmora-heat-monitor"), std::nullopt);
    EXPECT_TRUE(autostartEnabled(entry));
    const auto text = readWholeFile(entry).value_or("");
    EXPECT_NE(text.find("Exec=/opt/velmora/bin/velmora-heat-monitor\n"), std::string::npos);
    EXPECT_NE(text.find("Icon=org.velmora.heat-monitor\n"), std::string::npos);
    EXPECT_EQ(text.rfind("[Desktop Entry]\n", 0), 0U);
    EXPECT_EQ(std::distance(std::filesystem::directory_iterator(entry.parent_path()),
                            std::filesystem::directory_iterator()),
              1)
        << "a temporary file was left beside the entry";
    ASSERT_EQ(disableAutostart(entry), std::nullopt);
    EXPECT_FALSE(std::filesystem::exists(entry));
    EXPECT_FALSE(autostartEnabled(entry));
    EXPECT_EQ(disableAutostart(entry), std::nullopt) << "a missing entry is already off";
}

TEST(Autostart, AnEntrySwitchedOffBySettingsCountsAsOff) {
    TempDir temp{"tray"};
    const auto entry = temp.path() / "org.velmora.heat-monitor.desktop";
    std::ofstream(entry) << "[Desktop Entry]\nType=Application\nExec=x\nHidden=true\n";
    EXPECT_FALSE(autostartEnabled(entry));
    std::ofstream(entry) << "[Desktop Entry]\nExec=x\nX-GNOME-Autostart-enabled=false\n";
    EXPECT_FALSE(autostartEnabled(entry));
    ASSERT_EQ(enableAutostart(entry, "/usr/bin/velmora-heat-monitor"), std::nullopt);
    EXPECT_TRUE(autostartEnabled(entry));
}

TEST(Autostart, AnUnwritableFolderGivesAClearMessage) {
    if (::geteuid() == 0) GTEST_SKIP() << "root writes into read-only folders";
    TempDir temp{"tray"};
    const auto folder = temp.path() / "autostart";
    std::filesystem::create_directories(folder);
    ::chmod(folder.c_str(), 0500);
    const auto problem = enableAutostart(folder / "org.velmora.heat-monitor.desktop", "/usr/bin/v");
    ::chmod(folder.c_str(), 0700);
    ASSERT_TRUE(problem.has_value());
    EXPECT_NE(problem->find("cannot write"), std::string::npos) << *problem;
    EXPECT_NE(problem->find(folder.string()), std::string::npos) << *problem;
}

TEST(Autostart, TheEntryPassesTheDesktopFileValidator) {
    if (std::system("command -v desktop-file-validate >/dev/null 2>&1") != 0) {
        GTEST_SKIP() << "desktop-file-validate is not installed (scripts/install-deps)";
    }
    TempDir temp{"tray"};
    const auto entry = temp.path() / "org.velmora.heat-monitor.desktop";
    ASSERT_EQ(enableAutostart(entry, "/opt/My Apps/velmora-heat-monitor"), std::nullopt);
    const auto command = "desktop-file-validate '" + entry.string() + "'";
    EXPECT_EQ(std::system(command.c_str()), 0) << readWholeFile(entry).value_or("");
}

}  // namespace
}  // namespace velmora::test
