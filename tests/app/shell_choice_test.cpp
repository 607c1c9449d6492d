#include "app/core/shell_choice.hpp"

#include <gtest/gtest.h>

#include "app/core/data_dir_check.hpp"
#include "app/core/resource_dirs.hpp"
#include "app/core/usage.hpp"
#include "support/temp_dir.hpp"

namespace velmora {
namespace {

TEST(ShellChoice, HeadlessWithoutADisplayOrOnRequest) {
    LaunchOptions opts;
    PlatformEnvironment env;
    env.display = false;
    EXPECT_EQ(pickShell(opts, env), ShellKind::headless);
    env.display = true;
    EXPECT_EQ(pickShell(opts, env), ShellKind::desktop);
    opts.headless = true;
    EXPECT_EQ(pickShell(opts, env), ShellKind::headless);
}

TEST(ResourceDirs, InstalledLayoutWhenNoResourcesBesideTheExecutable) {
    EXPECT_EQ(resourceDirectory("/nonexistent/prefix/bin/velmora-heat-monitor"),
              std::filesystem::path("/nonexistent/prefix/share/velmora-heat-monitor"));
}

TEST(ResourceDirs, BuildTreeLayout) {
    const testing::TempDir dir("resource-dirs");
    std::filesystem::create_directories(dir / "resources");
    EXPECT_EQ(resourceDirectory(dir / "velmora-heat-monitor"), dir / "resources");
}

TEST(Usage, NamesEverySwitch) {
    const auto text = usageText();
    for (const char* name :
         {"--data-dir", "--consent", "--headless", "--mute", "--no-menu-item", "--dry-run-shutdown",
          "--test-emergency", "--simulate-denied", "--real-probe", "--force-thermal", "--diagnose",
          "--help", "--version"}) {
        EXPECT_NE(text.find(name), std::string::npos) << name;
    }
}

TEST(DataDirCheck, MissingDirectoryIsAProblem) {
    const auto problem = dataDirProblem("/nonexistent/velmora/data");
    ASSERT_TRUE(problem.has_value());
    EXPECT_NE(problem->find("/nonexistent/velmora/data"), std::string::npos);
}

TEST(DataDirCheck, WritableDirectoryIsFine) {
    EXPECT_FALSE(dataDirProblem(std::filesystem::temp_directory_path()).has_value());
}

}  // namespace
}  // namespace velmora
