#include "actuators/classify_osascript.hpp"

#include <gtest/gtest.h>

#include "actuators/dry_run_shutdowner.hpp"

namespace velmora {
namespace {

const std::string deniedText(DryRunShutdowner::deniedText);
const std::string timedOutText = "osascript timed out (no answer to the Automation prompt?)";

TEST(ClassifyOsascript, ExitZeroWithStandardErrorIsGranted) {
    EXPECT_EQ(classifyOsascript(0, "warning: something harmless\n", false),
              AutomationOutcome::granted());
    EXPECT_EQ(classifyOsascript(0, deniedText, false), AutomationOutcome::granted());
}

TEST(ClassifyOsascript, DeniedTextWithBlanksAndLineEndIsDeniedWithExactlyThatText) {
    EXPECT_EQ(classifyOsascript(1, "  " + deniedText + "\n", false),
              AutomationOutcome::denied(deniedText));
}

TEST(ClassifyOsascript, CapitalLetterPhraseIsDenied) {
    EXPECT_EQ(classifyOsascript(1, "NOT ALLOWED TO SEND APPLE EVENTS", false),
              AutomationOutcome::denied("NOT ALLOWED TO SEND APPLE EVENTS"));
    EXPECT_EQ(classifyOsascript(1, "Not Authorized To Send Apple Events", false),
              AutomationOutcome::denied("Not Authorized To Send Apple Events"));
}

TEST(ClassifyOsascript, ErrorNumbersAloneAreDenials) {
    EXPECT_EQ(classifyOsascript(1, "error (-1743)", false),
              AutomationOutcome::denied("error (-1743)"));
    EXPECT_EQ(classifyOsascript(1, "error (-1744)", false),
              AutomationOutcome::denied("error (-1744)"));
}

TEST(ClassifyOsascript, NumbersWithoutTheMinusAreNotDenials) {
    EXPECT_EQ(classifyOsascript(1, "error 1743", false), AutomationOutcome::failed("error 1743"));
}

TEST(ClassifyOsascript, ExitOneWithEmptyStandardErrorFailsWithTheStatus) {
    EXPECT_EQ(classifyOsascript(1, "", false), AutomationOutcome::failed("osascript exit 1"));
    EXPECT_EQ(classifyOsascript(1, " \n\t ", false), AutomationOutcome::failed("osascript exit 1"));
}

TEST(ClassifyOsascript, SignalStatusMinusNineFailsWithTheStatus) {
    EXPECT_EQ(classifyOsascript(-9, "", false), AutomationOutcome::failed("osascript exit -9"));
}

TEST(ClassifyOsascript, OtherErrorsFailWithTheTrimmedText) {
    EXPECT_EQ(classifyOsascript(1, "\n  execution error: Connection is invalid. (-609)  \n", false),
              AutomationOutcome::failed("execution error: Connection is invalid. (-609)"));
}

TEST(ClassifyOsascript, TimeOutFailsWhateverTheStatusAndText) {
    EXPECT_EQ(classifyOsascript(-1, "", true), AutomationOutcome::failed(timedOutText));
    EXPECT_EQ(classifyOsascript(0, "", true), AutomationOutcome::failed(timedOutText));
    EXPECT_EQ(classifyOsascript(1, deniedText, true), AutomationOutcome::failed(timedOutText));
}

TEST(AutomationOutcome, EqualityComparesCaseAndText) {
    EXPECT_EQ(AutomationOutcome::denied("a"), AutomationOutcome::denied("a"));
    EXPECT_NE(AutomationOutcome::denied("a"), AutomationOutcome::denied("b"));
    EXPECT_NE(AutomationOutcome::denied("a"), AutomationOutcome::failed("a"));
    EXPECT_NE(AutomationOutcome::granted(), AutomationOutcome::failed(""));
}

TEST(AutomationOutcome, DescribesItselfByCaseNameAndQuotedText) {
    EXPECT_EQ(describe(AutomationOutcome::granted()), "granted");
    EXPECT_EQ(describe(AutomationOutcome::failed("osascript exit 1")),
              "failed(\"osascript exit 1\")");
    EXPECT_EQ(describe(AutomationOutcome::denied("no")), "denied(\"no\")");
}

TEST(ShutdownError, DescriptionIsExactlyThePayload) {
    EXPECT_EQ(ShutdownError::denied(deniedText).description(), deniedText);
    EXPECT_EQ(ShutdownError::failed("osascript exit 1").description(), "osascript exit 1");
    EXPECT_NE(ShutdownError::denied("x"), ShutdownError::failed("x"));
}

}  // namespace
}  // namespace velmora
