#include "app/core/heat_notices.hpp"

#include <gtest/gtest.h>

#include <nlohmann/json.hpp>

namespace velmora::testing {
namespace {

using Op = NoticeCommand::Op;

/// Drives the rules with a clock of its own, in seconds from 1000.
class HeatNoticesTest : public ::testing::Test {
  protected:
    std::vector<NoticeCommand> at(double seconds, const NoticeFacts& facts) {
        return notices.update(facts, MonoTime::fromSeconds(1000 + seconds),
                              [this] { return risesWanted; });
    }

    static NoticeFacts heat(Level level, double celsius,
                            std::optional<std::string> busiest = std::nullopt) {
        NoticeFacts facts;
        facts.level = level;
        facts.celsius = celsius;
        facts.busiest = std::move(busiest);
        return facts;
    }

    static NoticeFacts counting(std::int64_t seconds, bool simulation = false) {
        auto facts = heat(Level::blowout, 104);
        if (simulation) facts.level.reset();
        facts.countdownSeconds = seconds;
        facts.simulation = simulation;
        return facts;
    }

    HeatNotices notices;
    bool risesWanted = true;
};

TEST_F(HeatNoticesTest, ARiseToHotNamesTheLevelTheFigureAndTheBusiestProcess) {
    EXPECT_TRUE(at(0, heat(Level::ok, 60)).empty());
    EXPECT_TRUE(at(1, heat(Level::warm, 80, "yes 99 %")).empty());
    const auto out = at(2, heat(Level::hot, 91.2, "cc1plus 96 %"));
    ASSERT_EQ(out.size(), 1U);
    EXPECT_EQ(out[0].op, Op::show);
    EXPECT_EQ(out[0].notice.kind, NoticeKind::heat);
    EXPECT_EQ(out[0].notice.summary, "HOT \u00b7 91 \u00b0C");
    EXPECT_EQ(out[0].notice.body, "Busiest: cc1plus 96 %");
    EXPECT_FALSE(out[0].notice.critical);
    EXPECT_FALSE(out[0].notice.cancelAction);
    // Staying hot says nothing more.
    EXPECT_TRUE(at(3, heat(Level::hot, 93)).empty());
}

TEST_F(HeatNoticesTest, ARiseToExtremeHeatReplacesTheHotOne) {
    at(0, heat(Level::hot, 90));
    const auto out = at(5, heat(Level::extreme, 99));
    ASSERT_EQ(out.size(), 1U);
    EXPECT_EQ(out[0].notice.kind, NoticeKind::heat);
    EXPECT_EQ(out[0].notice.summary, "EXTREME HEAT \u00b7 99 \u00b0C");
    EXPECT_NE(out[0].notice.body.find("The computer is running hot."), std::string::npos);
}

TEST_F(HeatNoticesTest, ALaunchThatStartsHotCountsAsARise) {
    const auto out = at(0, heat(Level::extreme, 98));
    ASSERT_EQ(out.size(), 1U);
    EXPECT_EQ(out[0].notice.summary, "EXTREME HEAT \u00b7 98 \u00b0C");
}

TEST_F(HeatNoticesTest, WarmAndFallsBelowHotAreNotTold) {
    EXPECT_TRUE(at(0, heat(Level::warm, 80)).empty());
    at(1, heat(Level::extreme, 99));
    EXPECT_TRUE(at(2, heat(Level::hot, 92)).empty());
    EXPECT_TRUE(at(3, heat(Level::warm, 85)).empty());
}

TEST_F(HeatNoticesTest, TheSameLevelIsToldAtMostOnceInTenMinutes) {
    ASSERT_EQ(at(0, heat(Level::hot, 90)).size(), 1U);
    at(60, heat(Level::warm, 85));
    EXPECT_TRUE(at(120, heat(Level::hot, 90)).empty());
    at(300, heat(Level::warm, 85));
    EXPECT_TRUE(at(599, heat(Level::hot, 90)).empty());
    at(601, heat(Level::warm, 85));
    const auto again = at(600 + 1.5, heat(Level::hot, 91));
    ASSERT_EQ(again.size(), 1U);
    EXPECT_EQ(again[0].notice.summary, "HOT \u00b7 91 \u00b0C");
}

TEST_F(HeatNoticesTest, BackToNormalAfterHotSaysCooledDownWithHowLongItLasted) {
    at(0, heat(Level::warm, 80));
    at(10, heat(Level::hot, 90));
    at(400, heat(Level::extreme, 99));
    at(700, heat(Level::warm, 80));
    const auto out = at(10 + 12 * 60, heat(Level::ok, 64));
    ASSERT_EQ(out.size(), 1U);
    EXPECT_EQ(out[0].notice.kind, NoticeKind::heat);
    EXPECT_EQ(out[0].notice.summary, "Cooled down");
    EXPECT_EQ(out[0].notice.body, "Back to NORMAL at 64 \u00b0C after 12 min at HOT or above.");
    EXPECT_TRUE(at(800, heat(Level::ok, 60)).empty());
}

TEST_F(HeatNoticesTest, BackToNormalAfterOnlyWarmSaysNothing) {
    at(0, heat(Level::warm, 80));
    EXPECT_TRUE(at(100, heat(Level::ok, 60)).empty());
}

TEST_F(HeatNoticesTest, TheSettingTurnsRisesAndCooledDownOffButNotTheCountdown) {
    risesWanted = false;
    EXPECT_TRUE(at(0, heat(Level::hot, 90)).empty());
    EXPECT_TRUE(at(1, heat(Level::extreme, 99)).empty());
    const auto counting9 = at(2, counting(9));
    ASSERT_EQ(counting9.size(), 1U);
    EXPECT_EQ(counting9[0].notice.kind, NoticeKind::countdown);
    at(3, heat(Level::warm, 80));
    EXPECT_TRUE(at(4, heat(Level::ok, 60)).empty());
    // Turned on again, the next rise is told.
    risesWanted = true;
    EXPECT_EQ(at(5, heat(Level::hot, 90)).size(), 1U);
}

TEST_F(HeatNoticesTest, TheCountdownIsOneUrgentNotificationReplacedEachSecondQuietly) {
    const auto first = at(0, counting(10));
    ASSERT_EQ(first.size(), 1U);
    const auto& notice = first[0].notice;
    EXPECT_EQ(notice.kind, NoticeKind::countdown);
    EXPECT_EQ(notice.summary, "EMERGENCY \u00b7 shutting down in 10 s");
    EXPECT_TRUE(notice.critical);
    EXPECT_TRUE(notice.cancelAction);
    EXPECT_FALSE(notice.quiet) << "the first one may sound";
    // Ticks within the same second change nothing.
    EXPECT_TRUE(at(0.25, counting(10)).empty());
    const auto next = at(1, counting(9));
    ASSERT_EQ(next.size(), 1U);
    EXPECT_EQ(next[0].op, Op::show);
    EXPECT_EQ(next[0].notice.summary, "EMERGENCY \u00b7 shutting down in 9 s");
    EXPECT_TRUE(next[0].notice.quiet);
}

TEST_F(HeatNoticesTest, TheCountdownNotificationClosesWhenItEndsEitherWay) {
    at(0, counting(3));
    auto cancelled = heat(Level::blowout, 104);  // cancelled: no countdown while still hot
    const auto out = at(1, cancelled);
    ASSERT_FALSE(out.empty());
    EXPECT_EQ(out[0].op, Op::close);
    EXPECT_EQ(out[0].notice.kind, NoticeKind::countdown);
    EXPECT_TRUE(at(2, cancelled).empty()) << "closed once";
    // A second countdown starts a fresh notification, which may sound again.
    const auto again = at(3, counting(10));
    ASSERT_EQ(again.size(), 1U);
    EXPECT_FALSE(again[0].notice.quiet);
}

TEST_F(HeatNoticesTest, AnEmergencyWithoutACountdownIsToldAsARise) {
    at(0, heat(Level::warm, 80));
    const auto out = at(1, heat(Level::blowout, 105));
    ASSERT_EQ(out.size(), 1U);
    EXPECT_EQ(out[0].notice.summary, "EMERGENCY \u00b7 105 \u00b0C");
}

TEST_F(HeatNoticesTest, ASimulatedCountdownSaysItIsATest) {
    const auto out = at(0, counting(7, true));
    ASSERT_EQ(out.size(), 1U);
    EXPECT_EQ(out[0].notice.summary, "SIMULATION \u00b7 shutting down in 7 s");
    EXPECT_EQ(out[0].notice.body, "A test of the emergency: nothing shuts down.");
}

TEST_F(HeatNoticesTest, TheManualNoticeAndARefusedPermissionAreToldOnceEach) {
    NoticeFacts facts;
    facts.manualReason = "Power off failed: no logind";
    auto out = at(0, facts);
    ASSERT_EQ(out.size(), 1U);
    EXPECT_EQ(out[0].notice.kind, NoticeKind::manual);
    EXPECT_EQ(out[0].notice.body, "Power off failed: no logind");
    EXPECT_TRUE(at(1, facts).empty());
    facts.permissionRefused = "Not authorised";
    out = at(2, facts);
    ASSERT_EQ(out.size(), 1U);
    EXPECT_EQ(out[0].notice.kind, NoticeKind::permission);
    EXPECT_TRUE(at(3, facts).empty());
    // Once cleared, a new occurrence is told again.
    facts.manualReason.reset();
    at(4, facts);
    facts.manualReason = "again";
    EXPECT_EQ(at(5, facts).size(), 1U);
}

TEST(NoticeFacts, AreReadFromTheEngineView) {
    const auto view = nlohmann::json::parse(R"({"state":"countdown","remaining":7,"sim":false,
        "level":4,"permState":"denied","permMsg":"Not allowed",
        "manual":{"reason":"Could not power off","perm":false}})");
    const auto facts = noticeFactsFromView(view, 101.0, std::string("yes 99 %"));
    EXPECT_EQ(facts.level, Level::blowout);
    EXPECT_EQ(facts.countdownSeconds, 7);
    EXPECT_EQ(facts.celsius, 101.0);
    EXPECT_EQ(facts.busiest, "yes 99 %");
    EXPECT_EQ(facts.manualReason, "Could not power off");
    EXPECT_EQ(facts.permissionRefused, "Not allowed");
}

TEST(NoticeFacts, ASimulationHidesTheLevelAndARefusalInTheManualNoticeIsToldThere) {
    const auto view = nlohmann::json::parse(R"({"state":"idle","remaining":0,"sim":true,
        "level":4,"permState":"denied","permMsg":"x","manual":{"reason":"r","perm":true}})");
    const auto facts = noticeFactsFromView(view, std::nullopt, std::nullopt);
    EXPECT_FALSE(facts.level.has_value());
    EXPECT_FALSE(facts.countdownSeconds.has_value());
    EXPECT_EQ(facts.manualReason, "r");
    EXPECT_FALSE(facts.permissionRefused.has_value());
    EXPECT_FALSE(noticeFactsFromView(nlohmann::json::array(), 1.0, std::nullopt).level);
}

TEST(SpellText, ReadsAsPeopleSayIt) {
    EXPECT_EQ(spellText(Seconds(40)), "40 s");
    EXPECT_EQ(spellText(Seconds(12 * 60 + 10)), "12 min");
    EXPECT_EQ(spellText(Seconds(65 * 60)), "1 h 5 min");
    EXPECT_EQ(spellText(Seconds(120 * 60)), "2 h");
    EXPECT_EQ(spellText(Seconds(-3)), "0 s");
}

}  // namespace
}  // namespace velmora::testing
