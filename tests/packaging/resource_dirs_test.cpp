#include "app/core/resource_dirs.hpp"

#include <gtest/gtest.h>

#include <fstream>

#include "support/temp_dir.hpp"

namespace velmora {
namespace {

class ResourceDirs : public ::testing::Test {
  protected:
    void touch(const std::filesystem::path& file) {
        std::filesystem::create_directories(file.parent_path());
        std::ofstream(file) << "x";
    }

    testing::TempDir tmp{"res"};
    std::filesystem::path root = tmp.path();
};

TEST_F(ResourceDirs, ABuildTreeUsesTheResourcesBesideTheExecutable) {
    std::filesystem::create_directories(root / "build" / "resources");
    EXPECT_EQ(resourceDirectory(root / "build" / "velmora-heat-monitor"),
              root / "build" / "resources");
}

TEST_F(ResourceDirs, AnInstallationUsesTheShareFolderOfItsPrefix) {
    EXPECT_EQ(resourceDirectory(root / "usr" / "bin" / "velmora-heat-monitor"),
              root / "usr" / "share" / "velmora-heat-monitor");
}

TEST_F(ResourceDirs, IconsComeFromTheResourcesElseFromTheSharedIconFolder) {
    const auto resources = root / "share" / "velmora-heat-monitor";
    std::filesystem::create_directories(resources);
    EXPECT_EQ(iconSearchPath(resources), std::filesystem::path());
    std::filesystem::create_directories(root / "share" / "icons" / "hicolor");
    EXPECT_EQ(iconSearchPath(resources), root / "share" / "icons");
    std::filesystem::create_directories(resources / "icons" / "hicolor");
    EXPECT_EQ(iconSearchPath(resources), resources / "icons");
}

TEST_F(ResourceDirs, TheReportNamesWhatIsMissing) {
    touch(root / "index.html");
    touch(root / "menubar.html");
    touch(root / "sounds" / "tick.wav");
    EXPECT_EQ(resourceReport(root), "resources: " + root.string() +
                                        "\n  pages: MISSING expanded.html, stagec.html\n"
                                        "  sounds: MISSING sounds/alarm.wav\n");
    touch(root / "expanded.html");
    touch(root / "stagec.html");
    touch(root / "sounds" / "alarm.wav");
    EXPECT_EQ(resourceReport(root),
              "resources: " + root.string() + "\n  pages: all 4 found\n  sounds: all 2 found\n");
}

}  // namespace
}  // namespace velmora
