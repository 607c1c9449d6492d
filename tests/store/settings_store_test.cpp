#include "store/settings_store.hpp"

#include "store/dates.hpp"
#include "temp_dir.hpp"

#include <gtest/gtest.h>

#include <nlohmann/json.hpp>

#include <chrono>

namespace velmora {
namespace {

using testing::entriesOf;
using testing::readText;
using testing::TempDir;
using testing::writeText;

const Timestamp first = Timestamp::fromSeconds(1794700033.25);  // 2026-11-14T23:47:13Z
const Timestamp later = first + std::chrono::hours(1);

TEST(SettingsStore, ConstructorTouchesNothingOnDisk) {
    const TempDir tmp;
    const SettingsStore store(tmp / "data");
    EXPECT_EQ(store.url(), tmp / "data" / "settings.json");
    EXPECT_FALSE(std::filesystem::exists(tmp / "data"));
}

TEST(SettingsStore, NoFileLoadsDefaultsThatAreNotEnabled) {
    const TempDir tmp;
    const Settings settings = SettingsStore(tmp.path()).load();
    EXPECT_TRUE(settings.autoShutdown);
    EXPECT_FALSE(settings.consentRecorded);
    EXPECT_FALSE(settings.consentAt.has_value());
    EXPECT_FALSE(settings.enabled());
}

TEST(SettingsStore, FileWithOnlyAutoShutdownFalseLoadsDefaultsWithAutoShutdownOn) {
    const TempDir tmp;
    writeText(tmp / "settings.json", R"({"autoShutdown": false})");
    const Settings settings = SettingsStore(tmp.path()).load();
    EXPECT_EQ(settings, Settings{});
    EXPECT_TRUE(settings.autoShutdown);
}

TEST(SettingsStore, NullConsentAtLoadsAbsentAndIsNotWrittenBack) {
    const TempDir tmp;
    writeText(tmp / "settings.json",
              R"({"autoShutdown": true, "consentRecorded": true, "consentAt": null})");
    const SettingsStore store(tmp.path());
    const Settings settings = store.load();
    EXPECT_EQ(settings, (Settings{true, true, std::nullopt}));

    ASSERT_FALSE(store.save(settings).has_value());
    const auto json = nlohmann::json::parse(readText(store.url()));
    EXPECT_FALSE(json.contains("consentAt"));
    EXPECT_EQ(store.load(), settings);
}

TEST(SettingsStore, SetAutoShutdownOffOnFreshDirectoryRecordsConsentNowAndKeepsItLater) {
    const TempDir tmp;
    const SettingsStore store(tmp.path());
    const auto off = store.setAutoShutdown(false, first);
    ASSERT_TRUE(off.ok()) << off.error().message;
    EXPECT_EQ(*off, (Settings{false, true, "2026-11-14T23:47:13Z"}));
    EXPECT_EQ(store.load(), *off);

    const auto on = store.setAutoShutdown(true, later);
    ASSERT_TRUE(on.ok()) << on.error().message;
    EXPECT_EQ(*on, (Settings{true, true, "2026-11-14T23:47:13Z"}));
    EXPECT_EQ(store.load(), *on);
}

TEST(SettingsStore, SetAutoShutdownKeepsAnAbsentConsentTimeOnceConsentIsRecorded) {
    const TempDir tmp;
    writeText(tmp / "settings.json", R"({"autoShutdown": true, "consentRecorded": true})");
    const auto result = SettingsStore(tmp.path()).setAutoShutdown(false, later);
    ASSERT_TRUE(result.ok());
    EXPECT_EQ(*result, (Settings{false, true, std::nullopt}));
}

TEST(SettingsStore, SetAutoShutdownTakesNowWhenConsentWasNotRecordedBefore) {
    const TempDir tmp;
    writeText(tmp / "settings.json",
              R"({"autoShutdown": true, "consentRecorded": false, "consentAt": "old"})");
    const auto result = SettingsStore(tmp.path()).setAutoShutdown(true, later);
    ASSERT_TRUE(result.ok());
    EXPECT_EQ(result->consentAt, rfc3339(later));
}

TEST(SettingsStore, SetAutoShutdownOverAGarbageFileTakesNow) {
    const TempDir tmp;
    writeText(tmp / "settings.json", "{ not json");
    const auto result = SettingsStore(tmp.path()).setAutoShutdown(true, later);
    ASSERT_TRUE(result.ok());
    EXPECT_EQ(*result, (Settings{true, true, rfc3339(later)}));
}

TEST(SettingsStore, RecordConsentAlwaysReplacesConsentAtWithNow) {
    const TempDir tmp;
    const SettingsStore store(tmp.path());
    ASSERT_TRUE(store.recordConsent(true, first).ok());
    const auto again = store.recordConsent(false, later);
    ASSERT_TRUE(again.ok());
    EXPECT_EQ(*again, (Settings{false, true, rfc3339(later)}));
    EXPECT_EQ(store.load(), *again);
}

TEST(SettingsStore, SaveCreatesMissingDirectoriesAndLeavesOnlyTheFile) {
    const TempDir tmp;
    const SettingsStore store(tmp / "a" / "b");
    ASSERT_FALSE(store.save(Settings{false, true, "t"}).has_value());
    EXPECT_EQ(entriesOf(tmp / "a" / "b"), std::vector<std::string>{"settings.json"});
    EXPECT_EQ(store.load(), (Settings{false, true, "t"}));
}

TEST(SettingsStore, SaveReplacesTheWholeOldFile) {
    const TempDir tmp;
    writeText(tmp / "settings.json", std::string(4000, ' ') + R"({"autoShutdown":true})");
    const SettingsStore store(tmp.path());
    ASSERT_FALSE(store.save(Settings{}).has_value());
    EXPECT_EQ(readText(store.url()), *encodeSettings(Settings{}));
}

TEST(SettingsStore, EmptyFileLoadsDefaults) {
    const TempDir tmp;
    writeText(tmp / "settings.json", "");
    EXPECT_EQ(SettingsStore(tmp.path()).load(), Settings{});
}

TEST(SettingsStore, GarbageFileLoadsDefaults) {
    const TempDir tmp;
    writeText(tmp / "settings.json", std::string("\x00\x7f\xff garbage {{", 14));
    EXPECT_EQ(SettingsStore(tmp.path()).load(), Settings{});
}

TEST(SettingsStore, DirectoryInPlaceOfTheFileLoadsDefaults) {
    const TempDir tmp;
    std::filesystem::create_directory(tmp / "settings.json");
    EXPECT_EQ(SettingsStore(tmp.path()).load(), Settings{});
}

TEST(SettingsStore, UnusableFileIsReportedOnceUntilItIsUsableAgain) {
    const TempDir tmp;
    std::vector<std::string> reports;
    const SettingsStore store(tmp.path(),
                              [&](const std::string& line) { reports.push_back(line); });
    std::filesystem::create_symlink("/dev/zero", store.url());
    for (int i = 0; i < 3; ++i)
        EXPECT_FALSE(store.load().consentRecorded);
    ASSERT_EQ(reports.size(), 1U);
    EXPECT_EQ(reports[0], "settings: " + store.url().string() + " is a symbolic link; not used");

    std::filesystem::remove(store.url());
    writeText(store.url(), std::string(SettingsStore::readCap + 1, ' '));
    static_cast<void>(store.load());
    static_cast<void>(store.load());
    ASSERT_EQ(reports.size(), 2U);
    EXPECT_EQ(reports[1],
              "settings: " + store.url().string() + " is larger than 65536 bytes; not used");

    ASSERT_TRUE(store.recordConsent(true, first).ok());
    EXPECT_TRUE(store.load().consentRecorded);
    std::filesystem::remove(store.url());
    writeText(store.url(), std::string(SettingsStore::readCap + 1, ' '));
    static_cast<void>(store.load());
    EXPECT_EQ(reports.size(), 3U);  // usable in between, so reported again
}

TEST(SettingsStore, SaveLeavesAPrivateFile) {
    const TempDir tmp;
    const SettingsStore store(tmp.path());
    ASSERT_FALSE(store.save(Settings{}));
    EXPECT_EQ(std::filesystem::status(store.url()).permissions(),
              std::filesystem::perms::owner_read | std::filesystem::perms::owner_write);
}

}  // namespace
}  // namespace velmora
