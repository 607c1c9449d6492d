#include "actuators/osascript_shutdowner.hpp"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <gtest/gtest.h>

#include <cerrno>
#include <chrono>
#include <future>
#include <optional>
#include <string>
#include <system_error>
#include <thread>
#include <vector>

#include "actuators/log_recorder.hpp"
#include "actuators/standins.hpp"
#include "support/manual_queue.hpp"
#include "support/temp_dir.hpp"

namespace velmora {
namespace {

using testing::standIn;

struct Harness {
    testing::LogRecorder log;
    testing::ManualQueue queue;
    OsascriptShutdowner make(const std::string& standInName) {
        return OsascriptShutdowner(log.sink(), queue.post(), ScriptRunner(standIn(standInName)));
    }
};

// Runs one shutdown and waits for its completion on the test thread.
std::optional<ShutdownError> shutdownWith(Harness& harness, const std::string& standInName) {
    OsascriptShutdowner shutdowner = harness.make(standInName);
    std::optional<std::optional<ShutdownError>> result;
    shutdowner.shutdown([&](std::optional<ShutdownError> error) { result = std::move(error); });
    EXPECT_TRUE(harness.queue.runNext());
    EXPECT_TRUE(result.has_value());
    return result.value_or(ShutdownError::failed("no completion"));
}

TEST(OsascriptShutdowner, TimeOutsAreTwentySecondsForShutdownAndTwoMinutesForTheProbe) {
    EXPECT_EQ(OsascriptShutdowner::shutdownTimeout, std::chrono::seconds(20));
    EXPECT_EQ(OsascriptShutdowner::probeTimeout, std::chrono::seconds(120));
}

TEST(OsascriptShutdowner, SuccessLogsOkAndCompletesWithoutError) {
    Harness harness;
    EXPECT_EQ(shutdownWith(harness, "exit0_with_stderr.sh"), std::nullopt);
    EXPECT_EQ(harness.log.lines(), std::vector<std::string>{"shutdown: osascript finished: ok"});
}

TEST(OsascriptShutdowner, RefusalLogsNotAuthorizedAndCompletesWithDenied) {
    Harness harness;
    const std::string text =
        "execution error: Not authorized to send Apple events to System Events. (-1743)";
    EXPECT_EQ(shutdownWith(harness, "denied_1743.sh"), ShutdownError::denied(text));
    EXPECT_EQ(harness.log.lines(),
              std::vector<std::string>{"shutdown: osascript NOT AUTHORIZED: " + text});
}

TEST(OsascriptShutdowner, FailureLogsErrorAndCompletesWithFailed) {
    Harness harness;
    EXPECT_EQ(shutdownWith(harness, "silent_exit1.sh"), ShutdownError::failed("osascript exit 1"));
    EXPECT_EQ(harness.log.lines(),
              std::vector<std::string>{"shutdown: osascript error: osascript exit 1"});
}

TEST(OsascriptShutdowner, MissingToolIsReportedAsFailedWithTheSystemsText) {
    Harness harness;
    const std::string text = "could not run osascript: " + std::generic_category().message(ENOENT);
    EXPECT_EQ(shutdownWith(harness, "no-such-tool"), ShutdownError::failed(text));
    EXPECT_EQ(harness.log.lines(), std::vector<std::string>{"shutdown: osascript error: " + text});
}

TEST(OsascriptShutdowner, RunsTheShutdownScript) {
    Harness harness;
    EXPECT_EQ(shutdownWith(harness, "echo_args.sh"),
              ShutdownError::failed("2\n-e\ntell application \"System Events\" to shut down"));
}

TEST(OsascriptShutdowner, ProbeRunsTheProbeScriptAndLogsNothing) {
    Harness harness;
    OsascriptShutdowner shutdowner = harness.make("echo_args.sh");
    std::optional<AutomationOutcome> outcome;
    shutdowner.probe([&](AutomationOutcome result) { outcome = std::move(result); });
    ASSERT_TRUE(harness.queue.runNext());
    EXPECT_EQ(outcome,
              AutomationOutcome::failed("2\n-e\ntell application \"System Events\" to get name"));
    EXPECT_TRUE(harness.log.lines().empty());
}

TEST(OsascriptShutdowner, ProbeCompletesOnTheOwnersLoopThread) {
    Harness harness;
    OsascriptShutdowner shutdowner = harness.make("exit0_with_stderr.sh");
    std::optional<std::thread::id> ranOn;
    std::optional<AutomationOutcome> outcome;
    shutdowner.probe([&](AutomationOutcome result) {
        ranOn = std::this_thread::get_id();
        outcome = std::move(result);
    });
    EXPECT_FALSE(outcome.has_value());  // never before the call returns
    ASSERT_TRUE(harness.queue.runNext());
    EXPECT_EQ(outcome, AutomationOutcome::granted());
    EXPECT_EQ(ranOn, std::this_thread::get_id());
}

TEST(OsascriptShutdowner, WithoutAMainLoopTheCompletionStillArrives) {
    testing::LogRecorder log;
    OsascriptShutdowner shutdowner(log.sink(), nullptr, ScriptRunner(standIn("silent_exit1.sh")));
    std::promise<std::optional<ShutdownError>> result;
    shutdowner.shutdown([&](std::optional<ShutdownError> error) { result.set_value(error); });
    std::future<std::optional<ShutdownError>> arrived = result.get_future();
    ASSERT_EQ(arrived.wait_for(std::chrono::seconds(10)), std::future_status::ready);
    EXPECT_EQ(arrived.get(), ShutdownError::failed("osascript exit 1"));
}

// The stand-in blocks on a FIFO until the test writes to it, so the shutdown cannot finish
// before the test lets it: the caller is free all that time.
TEST(OsascriptShutdowner, SlowShutdownNeverBlocksTheCaller) {
    testing::TempDir dir;
    const std::string gate = (dir.path() / "gate").string();
    ASSERT_EQ(::mkfifo(gate.c_str(), 0600), 0);
    Harness harness;
    OsascriptShutdowner shutdowner(
        harness.log.sink(), harness.queue.post(),
        ScriptRunner(testing::standInWith(dir.path(), "gate.sh", "VELMORA_TEST_GATE", gate)));
    std::optional<std::optional<ShutdownError>> result;
    shutdowner.shutdown([&](std::optional<ShutdownError> error) { result = std::move(error); });

    EXPECT_FALSE(result.has_value());
    EXPECT_EQ(harness.queue.size(), 0U);
    EXPECT_TRUE(harness.log.lines().empty());

    const int fd = ::open(gate.c_str(), O_WRONLY);  // waits for the stand-in to open it
    ASSERT_GE(fd, 0);
    ASSERT_EQ(::write(fd, "go\n", 3), 3);
    ::close(fd);
    ASSERT_TRUE(harness.queue.runNext());
    ASSERT_TRUE(result.has_value());
    EXPECT_EQ(*result, std::nullopt);
    EXPECT_EQ(harness.log.lines(), std::vector<std::string>{"shutdown: osascript finished: ok"});
}

}  // namespace
}  // namespace velmora
