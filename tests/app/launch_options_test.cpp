#include "app/core/launch_options.hpp"
#include "app/core/command_line.hpp"

#include <gtest/gtest.h>

namespace velmora {
namespace {

PlatformEnvironment linuxUser() {
    PlatformEnvironment env;
    env.home = "/home/ada";
    env.workingDir = "/srv/work";
    return env;
}

LaunchOptions parsed(std::vector<std::string> args, const PlatformEnvironment& env = linuxUser()) {
    args.insert(args.begin(), "/usr/bin/velmora-heat-monitor");
    auto opts = LaunchOptions::parse(args, env);
    EXPECT_TRUE(opts.has_value());
    return opts.value_or(LaunchOptions{});
}

TEST(LaunchOptions, NoArgumentsGiveTheDefaults) {
    const auto opts = parsed({});
    EXPECT_FALSE(opts.testEmergency);
    EXPECT_FALSE(opts.dryRun);
    EXPECT_FALSE(opts.noMenuItem);
    EXPECT_FALSE(opts.mute);
    EXPECT_FALSE(opts.simulateDenied);
    EXPECT_FALSE(opts.realProbe);
    EXPECT_FALSE(opts.headless);
    EXPECT_FALSE(opts.forceThermal.has_value());
    EXPECT_FALSE(opts.consent.has_value());
    EXPECT_EQ(opts.dataDir, "/home/ada/.local/share/velmora-heat-monitor");
}

TEST(LaunchOptions, TestEmergencyAloneImpliesDryRun) {
    const auto opts = parsed({"--test-emergency"});
    EXPECT_TRUE(opts.testEmergency);
    EXPECT_TRUE(opts.dryRun);
}

TEST(LaunchOptions, SimulateDeniedWithoutDryRunHasNoEffect) {
    const auto opts = parsed({"--simulate-denied", "--real-probe"});
    EXPECT_FALSE(opts.dryRun);
    EXPECT_FALSE(opts.simulateDenied);
    EXPECT_FALSE(opts.realProbe);
}

TEST(LaunchOptions, SimulateDeniedAndRealProbeCountWithADryRun) {
    EXPECT_TRUE(parsed({"--dry-run-shutdown", "--simulate-denied"}).simulateDenied);
    EXPECT_TRUE(parsed({"--test-emergency", "--real-probe"}).realProbe);
}

TEST(LaunchOptions, MatchingIsByWholeArgument) {
    const auto opts = parsed({"--mute=1", "--MUTE", "-m", "--dry-run", "--no-menu-item "});
    EXPECT_FALSE(opts.mute);
    EXPECT_FALSE(opts.dryRun);
    EXPECT_FALSE(opts.noMenuItem);
}

TEST(LaunchOptions, ProgramPathIsNotASwitch) {
    auto opts = LaunchOptions::parse({"--mute"}, linuxUser());
    ASSERT_TRUE(opts);
    EXPECT_FALSE(opts->mute);
}

TEST(LaunchOptions, ProbeSwitchesWithoutADryRunAreNamedInAWarning) {
    const auto opts = parsed({"--simulate-denied"});
    ASSERT_EQ(opts.warnings.size(), 1U);
    EXPECT_EQ(opts.warnings[0],
              "--simulate-denied has no effect without --dry-run-shutdown or --test-emergency");
    EXPECT_TRUE(parsed({"--dry-run-shutdown", "--simulate-denied"}).warnings.empty());
}

TEST(LaunchOptions, DataDirTildeIsTheHomeDirectory) {
    EXPECT_EQ(parsed({"--data-dir", "~/heat"}).dataDir, "/home/ada/heat");
    EXPECT_EQ(parsed({"--data-dir", "~"}).dataDir, "/home/ada");
}

TEST(LaunchOptions, DataDirRelativeIsResolvedAgainstTheWorkingDirectory) {
    EXPECT_EQ(parsed({"--data-dir", "logs/run1"}).dataDir, "/srv/work/logs/run1");
    EXPECT_EQ(parsed({"--data-dir", "../x"}).dataDir, "/srv/x");
}

TEST(LaunchOptions, RefusedDataDirKeepsTheDefault) {
    EXPECT_EQ(parsed({"--data-dir"}).dataDir, "/home/ada/.local/share/velmora-heat-monitor");
    const auto opts = parsed({"--data-dir", "--mute"});
    EXPECT_TRUE(opts.mute);
    EXPECT_EQ(opts.dataDir, "/home/ada/.local/share/velmora-heat-monitor");
}

TEST(LaunchOptions, NoDataHomeAndNoHomeNeedsAnExplicitDataDir) {
    PlatformEnvironment env;
    env.workingDir = "/";
    EXPECT_FALSE(LaunchOptions::parse({"prog", "--mute"}, env).has_value());
    const auto opts = LaunchOptions::parse({"prog", "--data-dir", "/tmp/x"}, env);
    ASSERT_TRUE(opts.has_value());
    EXPECT_EQ(opts->dataDir, "/tmp/x");
    EXPECT_EQ(LaunchOptions::parse({"prog", "--data-dir", "rel"}, env)->dataDir, "/rel");
}

TEST(LaunchOptions, XdgDataHomeWinsOverHome) {
    auto env = linuxUser();
    env.xdgDataHome = "/data";
    EXPECT_EQ(parsed({}, env).dataDir, "/data/velmora-heat-monitor");
}

TEST(LaunchOptions, LinuxAdditions) {
    const auto opts = parsed({"--headless", "--force-thermal", "Critical", "--consent", "on",
                              "--diagnose", "--help", "--version"});
    EXPECT_TRUE(opts.headless);
    EXPECT_EQ(opts.forceThermal, ThermalState::critical);
    EXPECT_EQ(opts.consent, true);
    EXPECT_TRUE(opts.diagnose);
    EXPECT_TRUE(opts.help);
    EXPECT_TRUE(opts.version);
}

TEST(LaunchOptions, ConsentOffIsRecordedAsFalse) {
    EXPECT_EQ(parsed({"--consent", "off"}).consent, false);
}

TEST(LaunchOptions, ConsentAnswerIgnoresAsciiCase) {
    EXPECT_EQ(parsed({"--consent", "ON"}).consent, true);
    EXPECT_EQ(parsed({"--consent", "Off"}).consent, false);
}

TEST(LaunchOptions, RefusedValuesLeaveTheDefaults) {
    const auto opts = parsed({"--force-thermal", "boiling", "--consent", "yes"});
    EXPECT_FALSE(opts.forceThermal.has_value());
    EXPECT_FALSE(opts.consent.has_value());
}

TEST(LaunchOptions, ArgumentListKeepsEveryArgument) {
    const char* argv[] = {"prog", "--mute", ""};
    EXPECT_EQ(argumentList(3, argv), (std::vector<std::string>{"prog", "--mute", ""}));
}

}  // namespace
}  // namespace velmora

namespace velmora {
namespace {

TEST(LaunchOptions, ExportHistoryTakesADashForStandardOutputOrAPath) {
    PlatformEnvironment env;
    env.home = "/home/u";
    env.workingDir = "/work";
    const auto toStdout = LaunchOptions::parse({"prog", "--export-history", "-"}, env);
    ASSERT_TRUE(toStdout);
    EXPECT_EQ(toStdout->exportHistory, "-");
    EXPECT_FALSE(commandLineProblem({"prog", "--export-history", "-"}));
    const auto toFile = LaunchOptions::parse({"prog", "--export-history", "heat.csv"}, env);
    ASSERT_TRUE(toFile);
    EXPECT_EQ(toFile->exportHistory, "/work/heat.csv");
    EXPECT_TRUE(commandLineProblem({"prog", "--export-history"}));
    EXPECT_TRUE(commandLineProblem({"prog", "--export-history", "--headless"}));
    EXPECT_TRUE(LaunchOptions::parse({"prog"}, env)->exportHistory.empty());
}

}  // namespace
}  // namespace velmora
