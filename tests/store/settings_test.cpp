#include "store/settings.hpp"

#include <gtest/gtest.h>

namespace velmora {
namespace {

TEST(Settings, DefaultsAreAutoShutdownOnWithoutConsent) {
    const Settings settings;
    EXPECT_TRUE(settings.autoShutdown);
    EXPECT_FALSE(settings.consentRecorded);
    EXPECT_FALSE(settings.consentAt.has_value());
    EXPECT_FALSE(settings.enabled());
}

TEST(Settings, EnabledNeedsBothTheSwitchAndConsent) {
    EXPECT_TRUE((Settings{true, true, std::nullopt}.enabled()));
    EXPECT_FALSE((Settings{false, true, std::nullopt}.enabled()));
    EXPECT_FALSE((Settings{true, false, std::nullopt}.enabled()));
    EXPECT_FALSE((Settings{false, false, std::nullopt}.enabled()));
}

TEST(Settings, EqualityComparesAllThreeFields) {
    const Settings base{true, true, "2026-11-14T23:47:13Z"};
    EXPECT_EQ(base, (Settings{true, true, "2026-11-14T23:47:13Z"}));
    EXPECT_NE(base, (Settings{false, true, "2026-11-14T23:47:13Z"}));
    EXPECT_NE(base, (Settings{true, false, "2026-11-14T23:47:13Z"}));
    EXPECT_NE(base, (Settings{true, true, "2026-11-14T23:47:14Z"}));
    EXPECT_NE(base, (Settings{true, true, std::nullopt}));
    EXPECT_EQ((Settings{true, true, std::nullopt}), (Settings{true, true, std::nullopt}));
}

TEST(SettingsJson, IsPrettyPrintedWithSortedKeys) {
    const auto json = encodeSettings(Settings{false, true, "2026-11-14T23:47:13Z"});
    ASSERT_TRUE(json.ok());
    EXPECT_EQ(*json,
              "{\n"
              "  \"autoShutdown\": false,\n"
              "  \"consentAt\": \"2026-11-14T23:47:13Z\",\n"
              "  \"consentRecorded\": true\n"
              "}\n");
}

TEST(SettingsJson, AbsentConsentTimeIsNotWritten) {
    const auto json = encodeSettings(Settings{});
    ASSERT_TRUE(json.ok());
    EXPECT_EQ(json->find("consentAt"), std::string::npos);
    EXPECT_EQ(json->find("null"), std::string::npos);
}

TEST(SettingsJson, ConsentTimeThatIsNotUtf8CannotBeEncoded) {
    const auto json = encodeSettings(Settings{true, true, std::string("\xff\xfe")});
    ASSERT_FALSE(json.ok());
    EXPECT_EQ(json.error().code, 0);
    EXPECT_NE(json.error().message.find("could not encode the settings"), std::string::npos);
}

TEST(SettingsJson, RoundTrips) {
    for (const Settings& settings : {Settings{}, Settings{false, true, "2026-11-14T23:47:13Z"},
                                     Settings{true, true, std::nullopt}}) {
        const auto json = encodeSettings(settings);
        ASSERT_TRUE(json.ok());
        EXPECT_EQ(decodeSettings(*json), settings) << *json;
    }
}

TEST(SettingsJson, IgnoresUnknownKeys) {
    const auto settings =
        decodeSettings(R"({"autoShutdown":false,"consentRecorded":true,"theme":"dark"})");
    EXPECT_EQ(settings, (Settings{false, true, std::nullopt}));
}

TEST(SettingsJson, NullConsentTimeDecodesAsAbsent) {
    const auto settings =
        decodeSettings(R"({"autoShutdown":true,"consentRecorded":true,"consentAt":null})");
    EXPECT_EQ(settings, (Settings{true, true, std::nullopt}));
}

TEST(SettingsJson, MissingOrMistypedRequiredKeysFailTheWholeDecode) {
    for (const char* text : {R"({"autoShutdown": false})", R"({"consentRecorded": true})",
                             R"({"autoShutdown":"true","consentRecorded":true})",
                             R"({"autoShutdown":true,"consentRecorded":1})",
                             R"({"autoShutdown":true,"consentRecorded":null})"}) {
        EXPECT_FALSE(decodeSettings(text).has_value()) << text;
    }
}

TEST(SettingsJson, ConsentTimeOfTheWrongTypeFailsTheDecode) {
    EXPECT_FALSE(decodeSettings(R"({"autoShutdown":true,"consentRecorded":true,"consentAt":17})"));
}

TEST(SettingsJson, TextThatIsNotAJsonObjectFailsTheDecode) {
    for (const char* text :
         {"", "   ", "garbage", "[]", "true", "{\"autoShutdown\":true,", "\xff\xfe{}"}) {
        EXPECT_FALSE(decodeSettings(text).has_value()) << text;
    }
}

}  // namespace
}  // namespace velmora
