#include <gtest/gtest.h>

#include <set>

#include "app/cocoa/menu_tags.hpp"

namespace velmora {
namespace {

TEST(MenuTags, EveryItemOfTheMainMenuHasItsOwnNonZeroTagThatLeadsBackToItsAction) {
    std::set<long> seen;
    for (const auto& submenu : mainMenu()) {
        for (const auto& item : submenu.items) {
            if (item.separator()) continue;
            const long tag = menuTag(*item.action);
            EXPECT_NE(tag, 0) << item.title;
            EXPECT_TRUE(seen.insert(tag).second) << item.title;
            EXPECT_EQ(menuActionOfTag(tag), item.action) << item.title;
        }
    }
    EXPECT_EQ(seen.size(), 8U);
}

TEST(MenuTags, TagsNoActionHasGiveNothing) {
    EXPECT_FALSE(menuActionOfTag(0).has_value());  // AppKit's default tag
    EXPECT_FALSE(menuActionOfTag(-1).has_value());
    EXPECT_FALSE(menuActionOfTag(menuTag(MenuAction::appearanceDark) + 1).has_value());
}

TEST(MenuTags, KeyEquivalentsAreTheOnesTheMenuModelGives) {
    // The Cocoa menu takes these as they are and adds the Command modifier.
    const auto menu = mainMenu();
    EXPECT_EQ(menu[0].items[0].keyEquivalent, ",");
    EXPECT_EQ(menu[0].items[2].keyEquivalent, "q");
    EXPECT_EQ(menu[1].items[0].keyEquivalent, "t");
    EXPECT_EQ(menu[2].items[0].keyEquivalent, "e");
    EXPECT_EQ(menu[2].items[1].keyEquivalent, "w");
}

}  // namespace
}  // namespace velmora
