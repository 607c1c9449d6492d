#include "store/settings_store.hpp"

#include "read_only_dir.hpp"
#include "temp_dir.hpp"

#include <gtest/gtest.h>

#include <cerrno>
#include <cstring>

namespace velmora {
namespace {

using testing::entriesOf;
using testing::ReadOnlyDir;
using testing::readText;
using testing::TempDir;
using testing::writeText;

const Timestamp now = Timestamp::fromSeconds(1794700033);
const std::string validOld = R"({"autoShutdown": false, "consentRecorded": true})";

bool mentions(const std::string& message, const std::string& part) {
    return message.find(part) != std::string::npos;
}

TEST(SettingsStoreFailure, DataDirectoryUnderARegularFileFailsWithTheSystemsMessage) {
    const TempDir tmp;
    writeText(tmp / "plain", "not a folder");
    const auto dir = tmp / "plain" / "data";
    const auto error = SettingsStore(dir).save(Settings{});
    ASSERT_TRUE(error.has_value());
    EXPECT_EQ(error->code, ENOTDIR);
    EXPECT_TRUE(mentions(error->message, dir.string())) << error->message;
    EXPECT_TRUE(mentions(error->message, std::strerror(ENOTDIR))) << error->message;
    EXPECT_EQ(readText(tmp / "plain"), "not a folder");
}

TEST(SettingsStoreFailure, DirectoryErrorComesBeforeAnEncodeError) {
    const TempDir tmp;
    writeText(tmp / "plain", "");
    const auto error =
        SettingsStore(tmp / "plain" / "data").save(Settings{true, true, std::string("\xff")});
    ASSERT_TRUE(error.has_value());
    EXPECT_EQ(error->code, ENOTDIR);
}

TEST(SettingsStoreFailure, RecordConsentAndSetAutoShutdownPassTheErrorOn) {
    const TempDir tmp;
    writeText(tmp / "plain", "");
    const SettingsStore store(tmp / "plain" / "data");
    const auto consent = store.recordConsent(true, now);
    const auto toggled = store.setAutoShutdown(false, now);
    ASSERT_FALSE(consent.ok());
    ASSERT_FALSE(toggled.ok());
    EXPECT_EQ(consent.error().code, ENOTDIR);
    EXPECT_EQ(toggled.error().code, ENOTDIR);
    EXPECT_TRUE(mentions(toggled.error().message, std::strerror(ENOTDIR)));
}

TEST(SettingsStoreFailure, UnencodableSettingsWriteNothing) {
    const TempDir tmp;
    writeText(tmp / "settings.json", validOld);
    const auto error = SettingsStore(tmp.path()).save(Settings{true, true, std::string("\xff")});
    ASSERT_TRUE(error.has_value());
    EXPECT_EQ(error->code, 0);
    EXPECT_EQ(readText(tmp / "settings.json"), validOld);
    EXPECT_EQ(entriesOf(tmp.path()), std::vector<std::string>{"settings.json"});
}

TEST(SettingsStoreFailure, DirectoryStandingWhereTheFileGoesFailsAndLeavesNoTemporaryFile) {
    const TempDir tmp;
    std::filesystem::create_directories(tmp / "settings.json" / "keep");
    const SettingsStore store(tmp.path());
    const auto error = store.save(Settings{});
    ASSERT_TRUE(error.has_value());
    EXPECT_TRUE(mentions(error->message, store.url().string())) << error->message;
    EXPECT_TRUE(mentions(error->message, std::strerror(error->code))) << error->message;
    EXPECT_EQ(entriesOf(tmp.path()), std::vector<std::string>{"settings.json"});
    EXPECT_TRUE(std::filesystem::is_directory(tmp / "settings.json" / "keep"));
}

TEST(SettingsStoreFailure, ReadOnlyDirectoryFailsAndKeepsTheOldFile) {
    const TempDir tmp;
    writeText(tmp / "settings.json", validOld);
    const ReadOnlyDir locked(tmp.path());
    if (!locked.holds()) GTEST_SKIP() << "this machine cannot make a directory refuse writes";
    const SettingsStore store(tmp.path());
    const auto result = store.setAutoShutdown(true, now);
    ASSERT_FALSE(result.ok());
    EXPECT_EQ(result.error().code, locked.refusal());
    EXPECT_TRUE(mentions(result.error().message, std::strerror(locked.refusal())));
    EXPECT_TRUE(mentions(result.error().message, tmp.path().string()));
    EXPECT_EQ(readText(store.url()), validOld);
    EXPECT_EQ(store.load(), (Settings{false, true, std::nullopt}));
    EXPECT_EQ(entriesOf(tmp.path()), std::vector<std::string>{"settings.json"});
}

}  // namespace
}  // namespace velmora
