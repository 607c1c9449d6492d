#include "actuators/dry_run_shutdowner.hpp"

#include <gtest/gtest.h>

#include <atomic>
#include <filesystem>
#include <optional>
#include <string>
#include <vector>

#include "actuators/log_recorder.hpp"
#include "actuators/script_runner.hpp"
#include "actuators/standins.hpp"
#include "support/manual_queue.hpp"
#include "support/temp_dir.hpp"

namespace velmora {
namespace {

using Lines = std::vector<std::string>;

const std::string wouldRun =
    "shutdown: DRY-RUN: would run osascript 'tell application \"System Events\" to shut "
    "down'. NOT executed.";
const std::string deniedText =
    "execution error: Not authorized to send Apple events to System Events. (-1743)";

struct Harness {
    testing::LogRecorder log;
    testing::ManualQueue queue;
    std::atomic<int> realProbes{0};
    std::atomic<double> lastTimeout{0};

    DryRunShutdowner make(DryRunOptions options, const PlatformTexts& texts = macosTexts) {
        return DryRunShutdowner(
            log.sink(), options, queue.post(),
            [this](Seconds timeout) {
                ++realProbes;
                lastTimeout = timeout.count();
                return AutomationOutcome::failed("osascript exit 1");
            },
            texts);
    }
};

TEST(DryRunShutdowner, DeniedTextIsTheToolsOwnRefusal) {
    EXPECT_EQ(DryRunShutdowner::deniedText, deniedText);
}

TEST(DryRunShutdowner, ShutdownLogsWhatItWouldRunAndSucceedsBeforeReturning) {
    Harness harness;
    DryRunShutdowner shutdowner = harness.make({});
    std::optional<std::optional<ShutdownError>> result;
    shutdowner.shutdown([&](std::optional<ShutdownError> error) { result = std::move(error); });
    ASSERT_TRUE(result.has_value());
    EXPECT_EQ(*result, std::nullopt);
    EXPECT_EQ(harness.log.lines(), Lines{wouldRun});
    EXPECT_EQ(harness.queue.size(), 0U);
}

TEST(DryRunShutdowner, DeniedShutdownSimulatesTheRefusalBeforeReturning) {
    Harness harness;
    DryRunShutdowner shutdowner = harness.make({.denied = true, .realProbe = false});
    std::optional<std::optional<ShutdownError>> result;
    shutdowner.shutdown([&](std::optional<ShutdownError> error) { result = std::move(error); });
    ASSERT_TRUE(result.has_value());
    EXPECT_EQ(*result, ShutdownError::denied(deniedText));
    EXPECT_EQ(harness.log.lines(),
              (Lines{wouldRun, "shutdown: DRY-RUN: simulating the -1743 not-authorized error"}));
}

TEST(DryRunShutdowner, ProbeReportsGrantedWithoutRunningAnything) {
    Harness harness;
    DryRunShutdowner shutdowner = harness.make({});
    std::optional<AutomationOutcome> outcome;
    shutdowner.probe([&](AutomationOutcome result) { outcome = std::move(result); });
    EXPECT_EQ(outcome, AutomationOutcome::granted());
    EXPECT_EQ(harness.log.lines(), Lines{"probe: DRY-RUN: not run (reported as granted)"});
    EXPECT_EQ(harness.realProbes, 0);
}

TEST(DryRunShutdowner, DeniedProbeAnswersAtOnce) {
    Harness harness;
    DryRunShutdowner shutdowner = harness.make({.denied = true, .realProbe = false});
    std::optional<AutomationOutcome> outcome;
    shutdowner.probe([&](AutomationOutcome result) { outcome = std::move(result); });
    EXPECT_EQ(outcome, AutomationOutcome::denied(deniedText));
    EXPECT_EQ(harness.log.lines(), Lines{"probe: DRY-RUN: simulating denied (-1743)"});
}

TEST(DryRunShutdowner, DeniedAndRealProbeNeverStartsAChild) {
    testing::TempDir dir;
    const std::filesystem::path mark = dir.path() / "mark";
    testing::LogRecorder log;
    testing::ManualQueue queue;
    const ScriptRunner runner(
        testing::standInWith(dir.path(), "touch_marker.sh", "VELMORA_TEST_MARK", mark.string()));
    DryRunShutdowner shutdowner(
        log.sink(), {.denied = true, .realProbe = true}, queue.post(),
        [runner](Seconds timeout) { return runner.run(macosTexts.probeScript, timeout); },
        macosTexts);
    std::optional<AutomationOutcome> outcome;
    shutdowner.probe([&](AutomationOutcome result) { outcome = std::move(result); });
    EXPECT_EQ(outcome, AutomationOutcome::denied(deniedText));
    EXPECT_EQ(queue.size(), 0U);
    EXPECT_FALSE(std::filesystem::exists(mark));
    EXPECT_EQ(log.lines(), Lines{"probe: DRY-RUN: simulating denied (-1743)"});
}

TEST(DryRunShutdowner, RealProbeRunsInTheBackgroundWithSixtySecondsAndLogsItsResult) {
    Harness harness;
    DryRunShutdowner shutdowner = harness.make({.denied = false, .realProbe = true});
    std::optional<AutomationOutcome> outcome;
    shutdowner.probe([&](AutomationOutcome result) { outcome = std::move(result); });
    EXPECT_FALSE(outcome.has_value());
    ASSERT_TRUE(harness.queue.runNext());
    EXPECT_EQ(outcome, AutomationOutcome::failed("osascript exit 1"));
    EXPECT_EQ(harness.realProbes, 1);
    EXPECT_EQ(harness.lastTimeout, 60);
    EXPECT_EQ(harness.log.lines(),
              (Lines{"probe: running the REAL harmless probe: osascript -e 'tell application "
                     "\"System Events\" to get name'",
                     "probe: REAL probe result: failed(\"osascript exit 1\")"}));
}

TEST(DryRunShutdowner, RealProbeThroughTheScriptingToolStandIn) {
    testing::LogRecorder log;
    testing::ManualQueue queue;
    const ScriptRunner runner(testing::standIn("exit0_with_stderr.sh"));
    DryRunShutdowner shutdowner(
        log.sink(), {.denied = false, .realProbe = true}, queue.post(),
        [runner](Seconds timeout) { return runner.run(macosTexts.probeScript, timeout); },
        macosTexts);
    std::optional<AutomationOutcome> outcome;
    shutdowner.probe([&](AutomationOutcome result) { outcome = std::move(result); });
    ASSERT_TRUE(queue.runNext());
    EXPECT_EQ(outcome, AutomationOutcome::granted());
    EXPECT_EQ(log.lines().back(), "probe: REAL probe result: granted");
}

TEST(DryRunShutdowner, LinuxWordingNamesLogindAndPolkit) {
    Harness harness;
    DryRunShutdowner shutdowner = harness.make({.denied = true, .realProbe = false}, linuxTexts);
    std::optional<std::optional<ShutdownError>> result;
    shutdowner.shutdown([&](std::optional<ShutdownError> error) { result = std::move(error); });
    std::optional<AutomationOutcome> outcome;
    shutdowner.probe([&](AutomationOutcome answer) { outcome = std::move(answer); });
    const std::string refusal =
        "org.freedesktop.DBus.Error.InteractiveAuthorizationRequired: Interactive "
        "authentication required.";
    ASSERT_TRUE(result.has_value());
    EXPECT_EQ(*result, ShutdownError::denied(refusal));
    EXPECT_EQ(outcome, AutomationOutcome::denied(refusal));
    EXPECT_EQ(harness.log.lines(),
              (Lines{"shutdown: DRY-RUN: would run logind "
                     "'org.freedesktop.login1.Manager.PowerOff(false)'. NOT executed.",
                     "shutdown: DRY-RUN: simulating the polkit not-authorized error",
                     "probe: DRY-RUN: simulating denied (polkit)"}));
}

TEST(DryRunShutdowner, LinuxRealProbeLineNamesLogind) {
    Harness harness;
    DryRunShutdowner shutdowner = harness.make({.denied = false, .realProbe = true}, linuxTexts);
    shutdowner.probe([](const AutomationOutcome&) {});
    ASSERT_TRUE(harness.queue.runNext());
    EXPECT_EQ(harness.log.lines().front(),
              "probe: running the REAL harmless probe: logind "
              "'org.freedesktop.login1.Manager.CanPowerOff'");
}

}  // namespace
}  // namespace velmora
