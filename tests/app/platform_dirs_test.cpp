#include "app/core/platform_dirs.hpp"

#include <gtest/gtest.h>

namespace velmora {
namespace {

TEST(PlatformDirs, DataDirFallsBackToLocalShare) {
    PlatformEnvironment env;
    env.home = "/home/ada";
    EXPECT_EQ(defaultDataDir(env),
              std::filesystem::path("/home/ada/.local/share/velmora-heat-monitor"));
}

TEST(PlatformDirs, RelativeOrEmptyXdgValuesAreIgnored) {
    PlatformEnvironment env;
    env.home = "/home/ada";
    env.xdgDataHome = "relative/data";
    env.xdgConfigHome = "";
    EXPECT_EQ(defaultDataDir(env),
              std::filesystem::path("/home/ada/.local/share/velmora-heat-monitor"));
    EXPECT_EQ(defaultConfigDir(env),
              std::filesystem::path("/home/ada/.config/velmora-heat-monitor"));
}

TEST(PlatformDirs, ConfigDirFromXdgConfigHome) {
    PlatformEnvironment env;
    env.xdgConfigHome = "/etc/user-config";
    EXPECT_EQ(defaultConfigDir(env),
              std::filesystem::path("/etc/user-config/velmora-heat-monitor"));
}

TEST(PlatformDirs, NothingWithoutABase) {
    PlatformEnvironment env;
    env.home = "not/absolute";
    EXPECT_FALSE(defaultDataDir(env).has_value());
    EXPECT_FALSE(defaultConfigDir(env).has_value());
}

TEST(PlatformDirs, TildeUserFormIsNotExpanded) {
    PlatformEnvironment env;
    env.home = "/home/ada";
    env.workingDir = "/w";
    EXPECT_EQ(resolveUserPath("~bob/x", env), std::filesystem::path("/w/~bob/x"));
}

TEST(PlatformDirs, TildeWithoutHomeStaysRelative) {
    PlatformEnvironment env;
    env.workingDir = "/w";
    EXPECT_EQ(resolveUserPath("~/x", env), std::filesystem::path("/w/~/x"));
}

TEST(PlatformDirs, AbsolutePathIsKept) {
    PlatformEnvironment env;
    env.workingDir = "/w";
    EXPECT_EQ(resolveUserPath("/var/lib/heat", env), std::filesystem::path("/var/lib/heat"));
}

}  // namespace
}  // namespace velmora
