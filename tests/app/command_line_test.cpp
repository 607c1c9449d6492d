#include "app/core/command_line.hpp"

#include <gtest/gtest.h>

#include "app/core/switch_docs.hpp"
#include "app/core/usage.hpp"

namespace velmora {
namespace {

std::optional<std::string> problemWith(std::vector<std::string> args) {
    args.insert(args.begin(), "/usr/bin/velmora-heat-monitor");
    return commandLineProblem(args);
}

TEST(CommandLine, EverySwitchOfTheTableIsAccepted) {
    EXPECT_EQ(problemWith({"--headless", "--data-dir", "/tmp/heat", "--dry-run-shutdown", "--mute",
                           "--no-menu-item", "--test-emergency", "--simulate-denied",
                           "--real-probe", "--force-thermal", "critical", "--consent", "on",
                           "--diagnose", "--help", "--version"}),
              std::nullopt);
    EXPECT_EQ(problemWith({}), std::nullopt);
}

TEST(CommandLine, MisspeltSwitchesAreRefusedWithASuggestion) {
    EXPECT_EQ(problemWith({"--dry-run"}),
              "unknown switch '--dry-run' (did you mean '--dry-run-shutdown'?)");
    EXPECT_EQ(problemWith({"--dryrun-shutdown"}),
              "unknown switch '--dryrun-shutdown' (did you mean '--dry-run-shutdown'?)");
    EXPECT_EQ(problemWith({"--force-thermal=critical"}),
              "unknown switch '--force-thermal=critical' (did you mean '--force-thermal "
              "critical'?)");
    EXPECT_EQ(problemWith({"--MUTE"}), "unknown switch '--MUTE' (did you mean '--mute'?)");
}

TEST(CommandLine, UnknownSwitchesAndStrayArgumentsAreRefused) {
    EXPECT_EQ(problemWith({"--frobnicate-everything"}), "unknown switch '--frobnicate-everything'");
    EXPECT_EQ(problemWith({"--mute", "extra"}), "unexpected argument 'extra'");
    EXPECT_EQ(problemWith({"-m"}), "unknown switch '-m'");
    EXPECT_EQ(problemWith({""}), "unexpected argument ''");
}

TEST(CommandLine, SwitchWithoutItsValueIsRefused) {
    EXPECT_EQ(problemWith({"--data-dir"}),
              "'--data-dir' needs a value (PATH) but is the last argument");
    EXPECT_EQ(problemWith({"--data-dir", "--mute"}),
              "'--data-dir' needs a value (PATH) but is followed by '--mute'");
    EXPECT_EQ(problemWith({"--consent"}),
              "'--consent' needs a value (on|off) but is the last argument");
}

TEST(CommandLine, ValuesOutsideTheChoicesAreRefused) {
    EXPECT_EQ(problemWith({"--force-thermal", "boiling"}),
              "'--force-thermal' does not accept 'boiling': use one of nominal fair serious "
              "critical");
    EXPECT_EQ(problemWith({"--consent", "yes"}),
              "'--consent' does not accept 'yes': use one of on off");
    EXPECT_EQ(problemWith({"--force-thermal", "Critical"}), std::nullopt);
}

TEST(CommandLine, ValueGivenTwiceIsRefused) {
    EXPECT_EQ(problemWith({"--data-dir", "/a", "--data-dir", "/b"}),
              "'--data-dir' is given more than once");
    EXPECT_EQ(problemWith({"--mute", "--mute"}), std::nullopt);
}

TEST(CommandLine, FirstProblemIsTheOneReported) {
    EXPECT_EQ(problemWith({"--mute", "--dry", "--bogus"}),
              "unknown switch '--dry' (did you mean '--dry-run-shutdown'?)");
}

TEST(CommandLine, ArgumentsMacOSPassesAreIgnoredWithTheirValues) {
    EXPECT_EQ(problemWith({"-psn_0_1234567", "-NSDocumentRevisionsDebugMode", "YES",
                           "-ApplePersistenceIgnoreState", "YES", "--mute"}),
              std::nullopt);
    const auto scanned = scanArguments(
        {"prog", "-NSDocumentRevisionsDebugMode", "--mute", "-AppleLanguages", "(en)"});
    EXPECT_TRUE(scanned.problem.empty());
    ASSERT_EQ(scanned.given.size(), 1U);
    EXPECT_EQ(scanned.given[0].option->name, "--mute");
}

TEST(CommandLine, ScanKeepsTheOrderAndTheValues) {
    const auto scanned =
        scanArguments({"prog", "--consent", "off", "--bogus", "--force-thermal", "fair"});
    EXPECT_EQ(scanned.problem, "unknown switch '--bogus'");
    ASSERT_EQ(scanned.given.size(), 2U);
    EXPECT_EQ(scanned.given[0].value, "off");
    EXPECT_EQ(scanned.given[1].option->name, "--force-thermal");
    EXPECT_EQ(scanned.given[1].value, "fair");
}

TEST(SwitchTable, HelpManualAndCompletionNameEverySwitch) {
    const auto help = usageText();
    const auto man = manPage();
    const auto completion = bashCompletion();
    for (const auto& option : switchTable()) {
        EXPECT_NE(help.find("\n  " + std::string(option.name)), std::string::npos) << option.name;
        std::string roffName;
        for (const char c : option.name)
            roffName += c == '-' ? std::string("\\-") : std::string(1, c);
        const std::string entry = option.takesValue()
                                      ? ".BI \"" + roffName + " \" " + std::string(option.valueName)
                                      : ".B " + roffName;
        EXPECT_NE(man.find(".TP\n" + entry + "\n"), std::string::npos) << option.name;
        EXPECT_NE(completion.find(std::string(option.name)), std::string::npos) << option.name;
        EXPECT_EQ(findSwitch(option.name), &option);
    }
    EXPECT_EQ(findSwitch("--dry-run"), nullptr);
}

TEST(SwitchTable, HelpLinesFitEightyColumns) {
    const auto help = usageText();
    std::size_t start = 0;
    while (start < help.size()) {
        const auto end = help.find('\n', start);
        const auto line = help.substr(start, end - start);
        // The first line carries a multi-byte dash; count characters, not bytes.
        std::size_t width = 0;
        for (const char c : line)
            width += (static_cast<unsigned char>(c) & 0xC0U) != 0x80U;
        EXPECT_LE(width, 80U) << line;
        start = end + 1;
    }
}

}  // namespace
}  // namespace velmora
