#include "app/core/notify_preference.hpp"

#include <gtest/gtest.h>

#include <fstream>

#include "app/core/file_preferences.hpp"
#include "support/temp_dir.hpp"

namespace velmora::testing {
namespace {

TEST(NotifyPreference, IsOnByDefaultAndKeepsTheUsersAnswer) {
    MemoryPreferences prefs;
    EXPECT_TRUE(loadNotifyWhenHot(prefs));
    EXPECT_FALSE(saveNotifyWhenHot(false, prefs).has_value());
    EXPECT_FALSE(loadNotifyWhenHot(prefs));
    EXPECT_FALSE(saveNotifyWhenHot(true, prefs).has_value());
    EXPECT_TRUE(loadNotifyWhenHot(prefs));
}

TEST(NotifyPreference, AnOlderPreferencesFileStaysReadableAndKeepsItsAppearance) {
    TempDir dir("notify-pref");
    std::ofstream(dir.path() / "preferences.json")
        << R"({"org.velmora.heat-monitor.heat.appearance": "dark"})"
        << "\n";
    FilePreferences prefs(dir.path());
    EXPECT_TRUE(loadNotifyWhenHot(prefs));
    EXPECT_EQ(loadAppearance(prefs), AppearancePref::dark);
    EXPECT_FALSE(saveNotifyWhenHot(false, prefs).has_value());
    FilePreferences again(dir.path());
    EXPECT_FALSE(loadNotifyWhenHot(again));
    EXPECT_EQ(loadAppearance(again), AppearancePref::dark);
}

TEST(NotifyPreference, AValueItDoesNotKnowCountsAsOn) {
    MemoryPreferences prefs;
    ASSERT_FALSE(prefs.setText(notifyWhenHotKey, "maybe").has_value());
    EXPECT_TRUE(loadNotifyWhenHot(prefs));
}

}  // namespace
}  // namespace velmora::testing
