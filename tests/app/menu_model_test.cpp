#include "app/core/menu_model.hpp"

#include <gtest/gtest.h>

namespace velmora {
namespace {

TEST(MainMenu, ThreeSubmenusInOrder) {
    const auto menu = mainMenu();
    ASSERT_EQ(menu.size(), 3U);
    EXPECT_EQ(menu[0].title, "");
    EXPECT_EQ(menu[1].title, "Test");
    EXPECT_EQ(menu[2].title, "View");
}

TEST(MainMenu, ApplicationMenu) {
    const auto items = mainMenu()[0].items;
    ASSERT_EQ(items.size(), 3U);
    EXPECT_EQ(items[0], (MenuItem{"Settings\u2026", MenuAction::settings, ","}));
    EXPECT_TRUE(items[1].separator());
    EXPECT_EQ(items[2], (MenuItem{"Quit Velmora Heat Monitor", MenuAction::quit, "q"}));
}

TEST(MainMenu, TestMenu) {
    const auto items = mainMenu()[1].items;
    ASSERT_EQ(items.size(), 1U);
    EXPECT_EQ(items[0], (MenuItem{"Test emergency (simulation, never shuts down)",
                                  MenuAction::testEmergency, "t"}));
}

TEST(MainMenu, ViewMenu) {
    const auto items = mainMenu()[2].items;
    ASSERT_EQ(items.size(), 6U);
    EXPECT_EQ(items[0], (MenuItem{"Expand", MenuAction::expand, "e"}));
    EXPECT_EQ(items[1], (MenuItem{"Collapse", MenuAction::collapse, "w"}));
    EXPECT_TRUE(items[2].separator());
    EXPECT_EQ(items[3], (MenuItem{"Appearance: Auto", MenuAction::appearanceAuto, ""}));
    EXPECT_EQ(items[4], (MenuItem{"Appearance: Light", MenuAction::appearanceLight, ""}));
    EXPECT_EQ(items[5], (MenuItem{"Appearance: Dark", MenuAction::appearanceDark, ""}));
}

TEST(MainMenu, AppearanceActionsRoundTrip) {
    for (const auto pref : allAppearances)
        EXPECT_EQ(appearanceOf(appearanceAction(pref)), pref);
    EXPECT_FALSE(appearanceOf(MenuAction::quit).has_value());
}

}  // namespace
}  // namespace velmora
