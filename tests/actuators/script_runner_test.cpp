#include "actuators/script_runner.hpp"

#include <gtest/gtest.h>

#include <cerrno>
#include <chrono>
#include <filesystem>
#include <fstream>
#include <string>
#include <system_error>
#include <thread>

#include "actuators/dry_run_shutdowner.hpp"
#include "actuators/standins.hpp"
#include "support/temp_dir.hpp"

namespace velmora {
namespace {

using testing::standIn;

const std::string deniedText(DryRunShutdowner::deniedText);
constexpr std::chrono::seconds generous{10};  // only a broken runner gets near it
constexpr std::chrono::milliseconds shortTimeOut{300};

AutomationOutcome runStandIn(const std::string& name, Seconds timeout = generous) {
    return ScriptRunner(standIn(name))
        .run("tell application \"System Events\" to get name", timeout);
}

TEST(ScriptRunner, DefaultsToTheMacScriptingTool) {
    EXPECT_EQ(ScriptRunner().executable(), "/usr/bin/osascript");
}

TEST(ScriptRunner, PassesDashEAndTheScriptAsOneArgument) {
    const AutomationOutcome outcome =
        ScriptRunner(standIn("echo_args.sh"))
            .run("tell application \"System Events\" to shut down", generous);
    EXPECT_EQ(outcome,
              AutomationOutcome::failed("2\n-e\ntell application \"System Events\" to shut down"));
}

TEST(ScriptRunner, ExitZeroWithStandardErrorIsGranted) {
    EXPECT_EQ(runStandIn("exit0_with_stderr.sh"), AutomationOutcome::granted());
}

TEST(ScriptRunner, DeniedTextWithBlanksAndLineEndIsDeniedWithExactlyThatText) {
    EXPECT_EQ(runStandIn("denied_1743.sh"), AutomationOutcome::denied(deniedText));
}

TEST(ScriptRunner, CapitalLetterPhraseIsDenied) {
    EXPECT_EQ(runStandIn("capital_phrase.sh"),
              AutomationOutcome::denied("NOT ALLOWED TO SEND APPLE EVENTS"));
}

TEST(ScriptRunner, SilentExitOneFailsWithTheStatus) {
    EXPECT_EQ(runStandIn("silent_exit1.sh"), AutomationOutcome::failed("osascript exit 1"));
}

TEST(ScriptRunner, ChildKilledBySignalNineFailsWithMinusNine) {
    EXPECT_EQ(runStandIn("kill9.sh"), AutomationOutcome::failed("osascript exit -9"));
}

TEST(ScriptRunner, OtherScriptErrorsFailWithTheTrimmedText) {
    EXPECT_EQ(runStandIn("plain_failure.sh"),
              AutomationOutcome::failed(
                  "execution error: System Events got an error: Connection is invalid. (-609)"));
}

TEST(ScriptRunner, UndecodableStandardErrorCountsAsEmpty) {
    EXPECT_EQ(runStandIn("bad_utf8.sh"), AutomationOutcome::failed("osascript exit 1"));
}

TEST(ScriptRunner, ChildRunningPastTheTimeOutFailsWhateverItWouldHavePrinted) {
    EXPECT_EQ(
        runStandIn("sleeper.sh", shortTimeOut),
        AutomationOutcome::failed("osascript timed out (no answer to the Automation prompt?)"));
}

TEST(ScriptRunner, ChildRunningPastTheTimeOutIsAskedToTerminate) {
    testing::TempDir dir;
    const std::filesystem::path mark = dir.path() / "mark";
    const ScriptRunner runner(
        testing::standInWith(dir.path(), "term_marker.sh", "VELMORA_TEST_MARK", mark.string()));
    EXPECT_EQ(runner.run("tell", shortTimeOut).kind, AutomationOutcome::Kind::failed);
    // The child writes its mark when SIGTERM reaches it; wait for that child, within reason.
    for (int i = 0; i < 500 && !std::filesystem::exists(mark); ++i) {
        std::this_thread::sleep_for(std::chrono::milliseconds(10));
    }
    std::ifstream in(mark);
    std::string word;
    in >> word;
    EXPECT_EQ(word, "terminated");
}

TEST(ScriptRunner, MissingExecutableCannotRunWithTheSystemsText) {
    const AutomationOutcome outcome =
        ScriptRunner("/nonexistent/velmora/osascript").run("tell", generous);
    EXPECT_EQ(outcome, AutomationOutcome::failed("could not run osascript: " +
                                                 std::generic_category().message(ENOENT)));
}

TEST(ScriptRunner, FileThatIsNotExecutableCannotRun) {
    const AutomationOutcome outcome =
        ScriptRunner(std::string(VELMORA_STANDINS_DIR)).run("tell", generous);
    EXPECT_EQ(outcome, AutomationOutcome::failed("could not run osascript: " +
                                                 std::generic_category().message(EACCES)));
}

}  // namespace
}  // namespace velmora
