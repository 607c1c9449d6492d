#include "app/linux/desktop_notifier.hpp"

#include <gtest/gtest.h>

#include <cstdlib>
#include <memory>
#include <nlohmann/json.hpp>

#include "tray/tray_support.hpp"

namespace velmora::test {
namespace {

using namespace std::chrono_literals;
using nlohmann::json;

/// The notifier against the stand-in server on the test's private session bus.
class DesktopNotifierTest : public ::testing::Test {
  protected:
    void SetUp() override {
        if (std::getenv("DBUS_SESSION_BUS_ADDRESS") == nullptr)
            GTEST_SKIP() << "no session bus (run under dbus-run-session)";
    }

    void startServer(const std::vector<std::string>& options = {}) {
        server = std::make_unique<StandinNotifications>(temp.path() / "server.log", options);
        ASSERT_TRUE(server->ready());
    }

    void makeNotifier() {
        notifier = std::make_unique<DesktopNotifier>();
        DesktopNotifier::Hooks hooks;
        hooks.log = [this](const std::string& line) { logLines.push_back(line); };
        hooks.cancelCountdown = [this] { ++cancels; };
        hooks.risesWanted = [this] { return risesWanted; };
        notifier->connect(std::move(hooks));
    }

    void sample(double celsius) {
        LiveInputs inputs;
        inputs.cpuTemp = TempReading{celsius, "Package id 0"};
        notifier->sampled(inputs, Timestamp{});
    }

    void tick(int level, const std::string& state = "idle", int remaining = 0) {
        notifier->ticked(json{{"level", level},
                              {"state", state},
                              {"remaining", remaining},
                              {"sim", false},
                              {"permState", "allowed"},
                              {"permMsg", ""}});
    }

    std::vector<json> notifiesWhen(std::size_t count) {
        pumpUntil([&] { return server->notifies().size() >= count; }, 10s);
        return server->notifies();
    }

    std::size_t logged(const std::string& start) const {
        std::size_t count = 0;
        for (const auto& line : logLines)
            count += line.rfind(start, 0) == 0 ? 1 : 0;
        return count;
    }

    TempDir temp{"notify"};
    std::unique_ptr<StandinNotifications> server;
    std::unique_ptr<DesktopNotifier> notifier;
    std::vector<std::string> logLines;
    int cancels = 0;
    bool risesWanted = true;
};

TEST_F(DesktopNotifierTest, ALaunchThatStartsHotIsOneNotificationWithTheLevelAndTheFigure) {
    startServer();
    makeNotifier();
    sample(91.4);
    tick(2);
    tick(2);
    const auto sent = notifiesWhen(1);
    ASSERT_EQ(sent.size(), 1U);
    EXPECT_EQ(sent[0]["summary"], "HOT \u00b7 91 \u00b0C");
    EXPECT_EQ(sent[0]["app"], "Velmora Heat Monitor");
    EXPECT_EQ(sent[0]["desktopEntry"], "org.velmora.heat-monitor");
    EXPECT_EQ(sent[0]["urgency"], 1);
    EXPECT_EQ(sent[0]["expire"], -1);
    EXPECT_EQ(sent[0]["replaces"], 0);
    EXPECT_TRUE(sent[0]["actions"].empty());
    pumpFor(300ms);
    EXPECT_EQ(server->notifies().size(), 1U) << "staying hot says nothing more";
}

TEST_F(DesktopNotifierTest, ARiseToExtremeHeatAndTheCoolingReplaceTheOneHeatNotification) {
    startServer();
    makeNotifier();
    sample(90);
    tick(1);
    tick(2);
    const auto hot = notifiesWhen(1);
    ASSERT_EQ(hot.size(), 1U);
    const auto id = hot[0]["id"].get<std::uint32_t>();
    sample(99);
    tick(3);
    auto sent = notifiesWhen(2);
    ASSERT_EQ(sent.size(), 2U);
    EXPECT_EQ(sent[1]["summary"], "EXTREME HEAT \u00b7 99 \u00b0C");
    EXPECT_EQ(sent[1]["replaces"], id);
    sample(60);
    tick(0);
    sent = notifiesWhen(3);
    ASSERT_EQ(sent.size(), 3U);
    EXPECT_EQ(sent[2]["summary"], "Cooled down");
    EXPECT_TRUE(
        sent[2]["body"].get<std::string>().starts_with("Back to NORMAL at 60 \u00b0C after "))
        << sent[2]["body"];
    EXPECT_EQ(sent[2]["replaces"], id);
}

TEST_F(DesktopNotifierTest, TheCountdownIsReplacedEachSecondQuietlyAndClosedWhenItEnds) {
    startServer();
    makeNotifier();
    sample(104);
    // Four ticks a second, as the countdown runs; each second waits for the server's answer.
    std::size_t second = 0;
    for (const int seconds : {10, 9, 8}) {
        for (int i = 0; i < 4; ++i)
            tick(4, "countdown", seconds);
        notifiesWhen(++second);
    }
    const auto sent = notifiesWhen(3);
    ASSERT_EQ(sent.size(), 3U) << "one per second, never one per tick";
    const auto id = sent[0]["id"].get<std::uint32_t>();
    EXPECT_EQ(sent[0]["summary"], "EMERGENCY \u00b7 shutting down in 10 s");
    EXPECT_EQ(sent[0]["urgency"], 2);
    EXPECT_EQ(sent[0]["expire"], 0);
    EXPECT_EQ(sent[0]["actions"], (json{"cancel", "Keep working \u00b7 Cancel"}));
    EXPECT_FALSE(sent[0]["suppressSound"].get<bool>());
    for (std::size_t i = 1; i < sent.size(); ++i) {
        EXPECT_EQ(sent[i]["replaces"], id);
        EXPECT_EQ(sent[i]["id"], id);
        EXPECT_TRUE(sent[i]["suppressSound"].get<bool>());
        EXPECT_EQ(sent[i]["urgency"], 2);
    }
    EXPECT_EQ(sent[2]["summary"], "EMERGENCY \u00b7 shutting down in 8 s");
    tick(4, "fired", 0);
    pumpUntil([&] { return server->calls().back()["call"] == "Close"; }, 10s);
    EXPECT_EQ(server->calls().back(), (json{{"call", "Close"}, {"id", id}}));
}

TEST_F(DesktopNotifierTest, KeepWorkingInTheCountdownsNotificationRunsTheCancel) {
    startServer();
    makeNotifier();
    sample(104);
    tick(4, "countdown", 10);
    const auto sent = notifiesWhen(1);
    ASSERT_EQ(sent.size(), 1U);
    const auto id = sent[0]["id"].get<std::uint32_t>();
    EXPECT_TRUE(whilePumping([&] { return server->invokeAction(id, "cancel"); }));
    EXPECT_TRUE(pumpUntil([&] { return cancels == 1; }, 10s));
    EXPECT_EQ(logged("notify: \"Keep working\" chosen"), 1U);
    // Another key, or the key on another notification, cancels nothing.
    EXPECT_TRUE(whilePumping([&] { return server->invokeAction(id, "default"); }));
    EXPECT_TRUE(whilePumping([&] { return server->invokeAction(id + 7, "cancel"); }));
    pumpFor(300ms);
    EXPECT_EQ(cancels, 1);
}

TEST_F(DesktopNotifierTest, TheSettingOffKeepsRisesAwayButNotTheCountdown) {
    startServer();
    makeNotifier();
    risesWanted = false;
    sample(95);
    tick(2);
    tick(3);
    sample(104);
    tick(4, "countdown", 10);
    const auto sent = notifiesWhen(1);
    pumpFor(300ms);
    ASSERT_EQ(server->notifies().size(), 1U);
    EXPECT_EQ(sent[0]["summary"], "EMERGENCY \u00b7 shutting down in 10 s");
}

TEST_F(DesktopNotifierTest, TheManualNoticeAndARefusedPermissionAreOneNotificationEach) {
    startServer();
    makeNotifier();
    risesWanted = false;
    const json manual{{"level", 4},
                      {"state", "idle"},
                      {"remaining", 0},
                      {"sim", false},
                      {"permState", "denied"},
                      {"permMsg", "Not authorised to power off"},
                      {"manual", {{"reason", "Power off failed"}, {"perm", false}}}};
    for (int i = 0; i < 3; ++i)
        notifier->ticked(manual);
    const auto sent = notifiesWhen(2);
    pumpFor(300ms);
    ASSERT_EQ(server->notifies().size(), 2U);
    EXPECT_EQ(sent[0]["summary"], "Shut down now: it could not be done for you");
    EXPECT_EQ(sent[0]["body"], "Power off failed");
    EXPECT_EQ(sent[1]["summary"], "Permission to power off was refused");
    EXPECT_EQ(sent[1]["body"], "Not authorised to power off");
}

TEST_F(DesktopNotifierTest, ADismissedCountdownStaysAwayUntilTheNextCountdown) {
    startServer();
    makeNotifier();
    tick(4, "countdown", 10);
    const auto first = notifiesWhen(1);
    ASSERT_EQ(first.size(), 1U);
    EXPECT_TRUE(whilePumping([&] { return server->dismiss(first[0]["id"].get<std::uint32_t>()); }));
    pumpFor(300ms);
    tick(4, "countdown", 9);
    tick(4, "countdown", 8);
    pumpFor(300ms);
    EXPECT_EQ(server->notifies().size(), 1U);
    tick(4, "idle", 0);
    tick(4, "countdown", 10);
    const auto again = notifiesWhen(2);
    ASSERT_EQ(again.size(), 2U);
    EXPECT_EQ(again[1]["replaces"], 0);
}

TEST_F(DesktopNotifierTest, ASlowServerGetsOnlyTheLatestUpdateOnceItAnswers) {
    startServer({"--slow", "1500"});
    makeNotifier();
    tick(4, "countdown", 10);
    notifiesWhen(1);  // it has the call; its answer takes 1.5 s
    for (const int seconds : {9, 8, 7})
        tick(4, "countdown", seconds);
    const auto sent = notifiesWhen(2);
    pumpFor(500ms);
    ASSERT_EQ(server->notifies().size(), 2U);
    EXPECT_EQ(sent[1]["summary"], "EMERGENCY \u00b7 shutting down in 7 s");
    EXPECT_EQ(sent[1]["replaces"], sent[0]["id"]);
}

TEST_F(DesktopNotifierTest, AFailingServerIsLoggedOnce) {
    startServer({"--fail"});
    makeNotifier();
    for (const int seconds : {10, 9, 8}) {
        tick(4, "countdown", seconds);
        pumpUntil(
            [&] { return server->notifies().size() >= static_cast<std::size_t>(11 - seconds); });
    }
    pumpFor(300ms);
    EXPECT_EQ(server->notifies().size(), 3U);
    EXPECT_EQ(logged("notify: the notification service did not show one"), 1U);
}

TEST_F(DesktopNotifierTest, WithoutAServerTheFailureIsLoggedOnce) {
    makeNotifier();
    tick(4, "countdown", 10);
    pumpUntil([&] { return !logLines.empty(); }, 10s);
    tick(4, "countdown", 9);
    tick(4, "countdown", 8);
    pumpFor(500ms);
    EXPECT_EQ(logged("notify: the notification service did not show one"), 1U);
    EXPECT_EQ(logLines.size(), 1U);
}

TEST_F(DesktopNotifierTest, WithoutASessionBusNoneIsSentAndThatIsLoggedOnce) {
    startServer();
    ::unsetenv("DBUS_SESSION_BUS_ADDRESS");
    ::setenv("XDG_RUNTIME_DIR", temp.path().c_str(), 1);
    makeNotifier();
    sample(95);
    tick(2);
    tick(4, "countdown", 10);
    tick(4, "countdown", 9);
    pumpFor(300ms);
    EXPECT_EQ(logLines,
              std::vector<std::string>{"notify: no session bus; no desktop notifications"});
    EXPECT_TRUE(server->notifies().empty());
}

}  // namespace
}  // namespace velmora::test
