#include <gtest/gtest.h>

#include <filesystem>
#include <fstream>
#include <set>

#include <unistd.h>

#include "app/icon/app_icon.hpp"
#include "support/temp_dir.hpp"

namespace velmora {
namespace {

struct Pixel {
    int r;
    int g;
    int b;
    int a;
};

Pixel at(const RgbaImage& image, double u, double v) {
    const auto x = static_cast<std::uint32_t>(u * image.width);
    const auto y = static_cast<std::uint32_t>(v * image.height);
    const auto* p = image.at(x, y);
    return Pixel{p[0], p[1], p[2], p[3]};
}

TEST(AppIcon, IsTransparentOutsideTheRoundedSquareAndOpaqueInside) {
    const auto icon = drawAppIcon(256);
    ASSERT_EQ(icon.width, 256U);
    ASSERT_EQ(icon.height, 256U);
    EXPECT_EQ(at(icon, 0.01, 0.01).a, 0);  // outside the body
    EXPECT_EQ(at(icon, 0.12, 0.12).a, 0);  // the rounded corner
    EXPECT_EQ(at(icon, 0.2, 0.5).a, 255);  // inside, beside the thermometer
    EXPECT_EQ(at(icon, 0.5, 0.95).a, 0);   // below the body
}

TEST(AppIcon, AWhiteThermometerWithRedMercuryOnAnAmberToRedBackground) {
    const auto icon = drawAppIcon(512);
    const auto glass = at(icon, 0.5, 0.3);
    EXPECT_GT(glass.r, 240);
    EXPECT_GT(glass.g, 240);
    EXPECT_GT(glass.b, 240);
    const auto bulb = at(icon, 0.5, 0.70);
    EXPECT_GT(bulb.r, 180);
    EXPECT_LT(bulb.g, 60);
    const auto top = at(icon, 0.25, 0.15);
    const auto bottom = at(icon, 0.25, 0.85);
    EXPECT_GT(top.g, bottom.g + 60);  // amber above, red below
    EXPECT_GT(bottom.r, 180);
}

TEST(AppIcon, EdgesAreSmoothedNotJagged) {
    const auto icon = drawAppIcon(128);
    std::set<int> alphas;
    for (std::uint32_t x = 0; x < 128; ++x)
        alphas.insert(icon.at(x, 64)[3]);
    // Fully out, fully in, and at least one partly covered pixel on the body's left edge.
    EXPECT_TRUE(alphas.contains(0));
    EXPECT_TRUE(alphas.contains(255));
    EXPECT_GT(alphas.size(), 2U);
}

TEST(AppIcon, TheIconSetHasTheTenPicturesTheMacExpects) {
    const auto entries = iconSetEntries();
    ASSERT_EQ(entries.size(), 10U);
    EXPECT_EQ(entries.front().fileName, "icon_16x16.png");
    EXPECT_EQ(entries.front().pixels, 16U);
    EXPECT_EQ(entries[1].fileName, "icon_16x16@2x.png");
    EXPECT_EQ(entries[1].pixels, 32U);
    EXPECT_EQ(entries.back().fileName, "icon_512x512@2x.png");
    EXPECT_EQ(entries.back().pixels, 1024U);
}

TEST(AppIcon, WritesEveryPictureOfTheSetAsAPngFile) {
    const testing::TempDir dir("iconset");
    ASSERT_FALSE(writeIconSet(dir / "AppIcon.iconset").has_value());
    for (const auto& entry : iconSetEntries()) {
        const auto file = dir / "AppIcon.iconset" / entry.fileName;
        ASSERT_TRUE(std::filesystem::is_regular_file(file)) << entry.fileName;
        std::ifstream in(file, std::ios::binary);
        char magic[4] = {};
        in.read(magic, 4);
        EXPECT_EQ(std::string(magic + 1, 3), "PNG") << entry.fileName;
    }
}

TEST(AppIcon, ReportsAFolderThatCannotBeMade) {
    const auto problem = writeIconSet("/proc/velmora-cannot-exist/AppIcon.iconset");
    ASSERT_TRUE(problem.has_value());
    EXPECT_NE(problem->find("cannot create"), std::string::npos);
}

}  // namespace
}  // namespace velmora
