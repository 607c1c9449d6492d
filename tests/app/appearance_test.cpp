#include "app/core/appearance.hpp"

#include <gtest/gtest.h>

#include <filesystem>
#include <fstream>

#include "app/core/file_preferences.hpp"
#include "support/temp_dir.hpp"

namespace velmora {
namespace {

TEST(AppearancePref, RawValuesTitlesAndCycle) {
    EXPECT_EQ(rawValue(AppearancePref::autoTheme), "auto");
    EXPECT_EQ(rawValue(AppearancePref::light), "light");
    EXPECT_EQ(rawValue(AppearancePref::dark), "dark");
    EXPECT_EQ(title(AppearancePref::autoTheme), "Auto");
    EXPECT_EQ(title(AppearancePref::dark), "Dark");
    EXPECT_EQ(next(AppearancePref::autoTheme), AppearancePref::light);
    EXPECT_EQ(next(AppearancePref::light), AppearancePref::dark);
    EXPECT_EQ(next(AppearancePref::dark), AppearancePref::autoTheme);
}

TEST(AppearancePref, StoredDarkWithCapitalDLoadsAsAuto) {
    EXPECT_EQ(appearanceFromStored(std::string("Dark")), AppearancePref::autoTheme);
}

TEST(AppearancePref, StoredTextRules) {
    EXPECT_EQ(appearanceFromStored(std::string("light")), AppearancePref::light);
    EXPECT_EQ(appearanceFromStored(std::string("dark")), AppearancePref::dark);
    EXPECT_EQ(appearanceFromStored(std::string("auto")), AppearancePref::autoTheme);
    EXPECT_EQ(appearanceFromStored(std::string("sepia")), AppearancePref::autoTheme);
    EXPECT_EQ(appearanceFromStored(std::nullopt), AppearancePref::autoTheme);
}

TEST(AppearancePref, RawConstructionIsStrict) {
    EXPECT_EQ(appearanceFromRaw("auto"), AppearancePref::autoTheme);
    EXPECT_FALSE(appearanceFromRaw("Dark").has_value());
    EXPECT_FALSE(appearanceFromRaw("").has_value());
    EXPECT_FALSE(appearanceFromRaw("sepia").has_value());
}

TEST(AppearancePref, KeyIsTheIdentifierWithItsSuffix) {
    EXPECT_EQ(appearanceDefaultsKey, std::string(bundleIdentifier) + ".heat.appearance");
}

class FilePreferencesTest : public ::testing::Test {
  protected:
    testing::TempDir tmp{"prefs"};
    // Not made yet: the preferences make their own folder.
    std::filesystem::path dir = tmp / "prefs";
};

TEST_F(FilePreferencesTest, SavedAppearanceLoadsAgain) {
    FilePreferences prefs(dir / "config");
    EXPECT_EQ(loadAppearance(prefs), AppearancePref::autoTheme);
    EXPECT_FALSE(saveAppearance(AppearancePref::dark, prefs).has_value());
    EXPECT_EQ(loadAppearance(FilePreferences(dir / "config")), AppearancePref::dark);
}

TEST_F(FilePreferencesTest, UnreadableFileFallsBackToAuto) {
    std::filesystem::create_directories(dir);
    std::ofstream(dir / "preferences.json") << "{not json";
    EXPECT_EQ(loadAppearance(FilePreferences(dir)), AppearancePref::autoTheme);
}

TEST_F(FilePreferencesTest, OtherKeysAreKept) {
    FilePreferences prefs(dir);
    ASSERT_FALSE(prefs.setText("other", "kept").has_value());
    ASSERT_FALSE(saveAppearance(AppearancePref::light, prefs).has_value());
    EXPECT_EQ(prefs.text("other"), "kept");
}

TEST_F(FilePreferencesTest, UnwritableDirectoryIsReported) {
    std::filesystem::create_directories(dir);
    std::ofstream(dir / "blocker") << "a file where a folder should be";
    FilePreferences prefs(dir / "blocker" / "config");
    const auto problem = saveAppearance(AppearancePref::dark, prefs);
    ASSERT_TRUE(problem.has_value());
    EXPECT_NE(problem->find("blocker"), std::string::npos);
}

TEST(MemoryPreferences, KeepsEveryKey) {
    MemoryPreferences prefs;
    ASSERT_FALSE(prefs.setText("a", "1").has_value());
    ASSERT_FALSE(prefs.setText("b", "2").has_value());
    EXPECT_EQ(prefs.text("a"), "1");
    EXPECT_EQ(prefs.text("b"), "2");
    EXPECT_FALSE(prefs.text("c").has_value());
}

}  // namespace
}  // namespace velmora
