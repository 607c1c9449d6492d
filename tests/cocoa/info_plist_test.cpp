#include <gtest/gtest.h>

#include <fstream>
#include <optional>
#include <sstream>
#include <string>

#include "app/core/appearance.hpp"
#include "policy/constants.hpp"

namespace velmora {
namespace {

std::string plistText() {
    std::ifstream in(VELMORA_INFO_PLIST);
    std::stringstream text;
    text << in.rdbuf();
    return text.str();
}

/// The string that follows `<key>key</key>` in the property list; nothing when absent.
std::optional<std::string> stringFor(const std::string& plist, const std::string& key) {
    const auto keyAt = plist.find("<key>" + key + "</key>");
    if (keyAt == std::string::npos) return std::nullopt;
    const auto open = plist.find("<string>", keyAt);
    const auto close = plist.find("</string>", open);
    const auto nextKey = plist.find("<key>", keyAt + 1);
    if (open == std::string::npos || close == std::string::npos || open > nextKey) {
        return std::nullopt;
    }
    return plist.substr(open + 8, close - open - 8);
}

TEST(InfoPlist, TheBundleIdentifierIsTheOneTheAppearanceKeyIsBuiltOn) {
    const auto plist = plistText();
    ASSERT_FALSE(plist.empty()) << VELMORA_INFO_PLIST;
    EXPECT_EQ(stringFor(plist, "CFBundleIdentifier"), std::string(bundleIdentifier));
    EXPECT_TRUE(appearanceDefaultsKey.starts_with(std::string(bundleIdentifier) + "."));
}

TEST(InfoPlist, TheVersionIsTheProgramsVersion) {
    const auto plist = plistText();
    EXPECT_EQ(stringFor(plist, "CFBundleShortVersionString"), std::string(watchdog::version));
    EXPECT_EQ(stringFor(plist, "CFBundleVersion"), std::string(watchdog::version));
}

TEST(InfoPlist, TheAutomationPromptExplainsWhySystemEventsIsControlled) {
    // Without this text macOS never shows the Automation prompt and the shutdown is refused.
    const auto why = stringFor(plistText(), "NSAppleEventsUsageDescription");
    ASSERT_TRUE(why.has_value());
    EXPECT_NE(why->find("System Events"), std::string::npos);
    EXPECT_NE(why->find("shut"), std::string::npos);
}

TEST(InfoPlist, NamesTheExecutableTheIconAndTheMinimumSystem) {
    const auto plist = plistText();
    EXPECT_EQ(stringFor(plist, "CFBundlePackageType"), "APPL");
    EXPECT_EQ(stringFor(plist, "CFBundleIconFile"), "AppIcon");
    EXPECT_TRUE(stringFor(plist, "CFBundleExecutable").has_value());
    EXPECT_TRUE(stringFor(plist, "LSMinimumSystemVersion").has_value());
}

}  // namespace
}  // namespace velmora
