#include "store/settings_cache.hpp"

#include <gtest/gtest.h>

#include <chrono>
#include <thread>

#include "store/file_size_limit.hpp"
#include "store/temp_dir.hpp"

// The in-memory settings: last good values, problems said once, this run's answers.
namespace velmora::testing {
namespace {

const Settings kConsented{true, true, "2027-01-14T09:30:00Z"};
const Settings kSwitchedOff{false, true, "2027-01-14T09:30:00Z"};

class SettingsCacheTest : public ::testing::Test {
  protected:
    void save(const Settings& settings) {
        ASSERT_FALSE(SettingsStore(dir.path()).save(settings).has_value());
    }

    /// Waits up to `seconds` for the cache to show `wanted`.
    bool eventuallyShows(const Settings& wanted, double seconds) {
        const auto until =
            std::chrono::steady_clock::now() + std::chrono::duration<double>(seconds);
        while (std::chrono::steady_clock::now() < until) {
            if (cache.snapshot().settings == wanted) return true;
            std::this_thread::sleep_for(std::chrono::milliseconds(20));
        }
        return false;
    }

    TempDir dir;
    SettingsCache cache{SettingsStore(dir.path())};
};

TEST_F(SettingsCacheTest, NothingIsReadBeforeTheFirstRefresh) {
    save(kConsented);
    EXPECT_FALSE(cache.snapshot().loaded);
    EXPECT_EQ(cache.snapshot().settings, Settings{});
}

TEST_F(SettingsCacheTest, NoFileAtTheFirstReadMeansTheDefaultsWithoutAProblem) {
    cache.refresh();
    const auto snapshot = cache.snapshot();
    EXPECT_TRUE(snapshot.loaded);
    EXPECT_EQ(snapshot.settings, Settings{});
    EXPECT_FALSE(snapshot.problem.has_value());
}

TEST_F(SettingsCacheTest, GarbageKeepsTheLastGoodSettingsAndCountsOneChange) {
    save(kConsented);
    cache.refresh();
    const auto good = cache.snapshot();
    writeText(dir / "settings.json", "{ not json");
    cache.refresh();
    const auto spoiled = cache.snapshot();
    cache.refresh();
    EXPECT_EQ(spoiled.settings, kConsented);
    ASSERT_TRUE(spoiled.problem.has_value());
    EXPECT_EQ(*spoiled.problem, "could not be read or does not hold valid settings");
    EXPECT_EQ(spoiled.version, good.version + 1);
    EXPECT_EQ(cache.snapshot().version, spoiled.version) << "a second bad read is no news";
}

TEST_F(SettingsCacheTest, FolderDeletedAfterAGoodReadKeepsTheLastGoodSettings) {
    save(kConsented);
    cache.refresh();
    std::filesystem::remove_all(dir.path());
    cache.refresh();
    EXPECT_EQ(cache.snapshot().settings, kConsented);
    EXPECT_EQ(cache.snapshot().problem, "is missing");
}

TEST_F(SettingsCacheTest, GoodFileAfterAProblemIsTakenAndClearsIt) {
    save(kConsented);
    cache.refresh();
    writeText(dir / "settings.json", "");
    cache.refresh();
    save(kSwitchedOff);
    cache.refresh();
    EXPECT_EQ(cache.snapshot().settings, kSwitchedOff);
    EXPECT_FALSE(cache.snapshot().problem.has_value());
}

TEST_F(SettingsCacheTest, AnAnswerIsInForceAtOnceAndSaved) {
    cache.refresh();
    EXPECT_FALSE(cache.keep(kSwitchedOff, std::chrono::seconds(5)).has_value());
    EXPECT_EQ(cache.snapshot().settings, kSwitchedOff);
    EXPECT_FALSE(cache.snapshot().answerUnsaved);
    EXPECT_EQ(SettingsStore(dir.path()).tryLoad(), kSwitchedOff);
}

TEST_F(SettingsCacheTest, AnUnsavedAnswerWinsOverTheFileUntilTheFileAgrees) {
    save(kConsented);
    cache.refresh();
    WriteError error;
    {
        const NoFileGrowth noGrowth;
        error = cache.keep(kSwitchedOff, std::chrono::seconds(5));
    }
    ASSERT_TRUE(error.has_value());
    EXPECT_EQ(cache.snapshot().settings, kSwitchedOff);
    EXPECT_TRUE(cache.snapshot().answerUnsaved);
    cache.refresh();  // the file still says yes
    EXPECT_EQ(cache.snapshot().settings, kSwitchedOff);
    EXPECT_EQ(cache.snapshot().problem, "holds other settings than this run's unsaved answer");
    save(kSwitchedOff);
    cache.refresh();
    EXPECT_FALSE(cache.snapshot().answerUnsaved);
    EXPECT_FALSE(cache.snapshot().problem.has_value());
    save(kConsented);  // now an ordinary change again
    cache.refresh();
    EXPECT_EQ(cache.snapshot().settings, kConsented);
}

TEST_F(SettingsCacheTest, WatchingReadsAChangeWithoutBeingAsked) {
    save(kConsented);
    EXPECT_TRUE(cache.startWatching(std::chrono::seconds(5)));
    EXPECT_EQ(cache.snapshot().settings, kConsented);
    save(kSwitchedOff);
    EXPECT_TRUE(eventuallyShows(kSwitchedOff, 10));
}

TEST_F(SettingsCacheTest, WatchingSeesTheFileReplacedByHand) {
    EXPECT_TRUE(cache.startWatching(std::chrono::seconds(5)));
    writeText(
        dir / "settings.json",
        R"({"autoShutdown": true, "consentRecorded": true, "consentAt": "2027-01-14T09:30:00Z"})");
    EXPECT_TRUE(eventuallyShows(kConsented, 10));
}

}  // namespace
}  // namespace velmora::testing
