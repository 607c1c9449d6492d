#include "actuators/linux/logind_shutdowner.hpp"

#include <gtest/gtest.h>

#include <chrono>
#include <cstdlib>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "actuators/fake_logind.hpp"
#include "actuators/linux/logind_calls.hpp"
#include "actuators/log_recorder.hpp"
#include "actuators/private_bus.hpp"
#include "support/manual_queue.hpp"

namespace velmora {
namespace {

using testing::FakeLogind;
using testing::FakeLogindScript;
using Lines = std::vector<std::string>;
using PowerOff = FakeLogindScript::PowerOff;

constexpr LogindTimeouts quick{.shutdown = std::chrono::milliseconds(300),
                               .probe = std::chrono::milliseconds(300)};
constexpr LogindTimeouts patient{.shutdown = std::chrono::seconds(10),
                                 .probe = std::chrono::seconds(10)};  // only a broken bus gets near

// sd-bus finds the system bus through this variable. It is only changed while no shutdowner
// thread runs.
void useSystemBus(const std::string& address) {
    // NOLINTNEXTLINE(concurrency-mt-unsafe)
    ::setenv("DBUS_SYSTEM_BUS_ADDRESS", address.c_str(), 1);
}

class LogindShutdownerTest : public ::testing::Test {
  protected:
    static void SetUpTestSuite() {
        bus = new testing::PrivateBus();  // NOLINT: lives for the whole suite
        if (!bus->address().empty()) {
            useSystemBus(bus->address());
        }
    }
    static void TearDownTestSuite() {
        delete bus;
        bus = nullptr;
    }
    void SetUp() override { ASSERT_FALSE(bus->address().empty()) << bus->problem(); }

    std::unique_ptr<FakeLogind> startLogind(FakeLogindScript script) {
        auto fake = std::make_unique<FakeLogind>(bus->address(), std::move(script));
        EXPECT_EQ(fake->problem(), "");
        return fake;
    }

    LogindShutdowner make(LogindTimeouts timeouts = patient) {
        return LogindShutdowner(log.sink(), queue.post(), timeouts);
    }

    std::optional<ShutdownError> shutdownNow(LogindTimeouts timeouts = patient) {
        LogindShutdowner shutdowner = make(timeouts);
        std::optional<std::optional<ShutdownError>> result;
        shutdowner.shutdown([&](std::optional<ShutdownError> error) { result = std::move(error); });
        EXPECT_TRUE(queue.runNext());
        EXPECT_TRUE(result.has_value());
        return result.value_or(ShutdownError::failed("no completion"));
    }

    AutomationOutcome probeNow(LogindTimeouts timeouts = patient) {
        LogindShutdowner shutdowner = make(timeouts);
        std::optional<AutomationOutcome> outcome;
        shutdowner.probe([&](AutomationOutcome result) { outcome = std::move(result); });
        EXPECT_TRUE(queue.runNext());
        return outcome.value_or(AutomationOutcome::failed("no completion"));
    }

    std::unique_ptr<FakeLogind> refusingWith(const std::string& name, const std::string& message) {
        return startLogind(FakeLogindScript::refusing(name, message));
    }

    static testing::PrivateBus* bus;
    testing::LogRecorder log;
    testing::ManualQueue queue;
};

testing::PrivateBus* LogindShutdownerTest::bus = nullptr;

TEST(LogindTimeouts, MatchTheScriptingTools) {
    EXPECT_EQ(LogindTimeouts{}.shutdown, std::chrono::seconds(20));
    EXPECT_EQ(LogindTimeouts{}.probe, std::chrono::seconds(120));
}

TEST_F(LogindShutdownerTest, CanPowerOffYesIsGranted) {
    auto logind = startLogind(FakeLogindScript::answering("yes"));
    EXPECT_EQ(probeNow(), AutomationOutcome::granted());
    EXPECT_TRUE(log.lines().empty());
}

TEST_F(LogindShutdownerTest, CanPowerOffNoIsDenied) {
    auto logind = startLogind(FakeLogindScript::answering("no"));
    EXPECT_EQ(probeNow(), AutomationOutcome::denied("logind CanPowerOff answered \"no\""));
}

TEST_F(LogindShutdownerTest, CanPowerOffChallengeIsDenied) {
    auto logind = startLogind(FakeLogindScript::answering("challenge"));
    EXPECT_EQ(probeNow(), AutomationOutcome::denied("logind CanPowerOff answered \"challenge\""));
}

TEST_F(LogindShutdownerTest, CanPowerOffNaFails) {
    auto logind = startLogind(FakeLogindScript::answering("na"));
    EXPECT_EQ(probeNow(), AutomationOutcome::failed("logind CanPowerOff answered \"na\""));
    EXPECT_TRUE(log.lines().empty());
}

TEST_F(LogindShutdownerTest, PowerOffSuccessLogsOkAndAsksWithoutAPrompt) {
    auto logind = startLogind(FakeLogindScript::poweringOff(PowerOff::succeed));
    EXPECT_EQ(shutdownNow(), std::nullopt);
    EXPECT_EQ(log.lines(), Lines{"shutdown: logind finished: ok"});
    EXPECT_EQ(logind->powerOffCalls(), std::vector<bool>{false});
}

TEST_F(LogindShutdownerTest, AccessDeniedIsNotAuthorized) {
    auto logind = refusingWith("org.freedesktop.DBus.Error.AccessDenied", "Permission denied");
    const std::string text = "org.freedesktop.DBus.Error.AccessDenied: Permission denied";
    EXPECT_EQ(shutdownNow(), ShutdownError::denied(text));
    EXPECT_EQ(log.lines(), Lines{"shutdown: logind NOT AUTHORIZED: " + text});
}

TEST_F(LogindShutdownerTest, InteractiveAuthorizationRequiredIsNotAuthorized) {
    auto logind = refusingWith("org.freedesktop.DBus.Error.InteractiveAuthorizationRequired",
                               "Interactive authentication required.");
    const std::string text =
        "org.freedesktop.DBus.Error.InteractiveAuthorizationRequired: Interactive "
        "authentication required.";
    EXPECT_EQ(shutdownNow(), ShutdownError::denied(text));
    EXPECT_EQ(log.lines(), Lines{"shutdown: logind NOT AUTHORIZED: " + text});
}

TEST_F(LogindShutdownerTest, OperationInProgressIsAnError) {
    auto logind = refusingWith("org.freedesktop.login1.OperationInProgress",
                               "There's already a shutdown or sleep operation in progress");
    const std::string text =
        "org.freedesktop.login1.OperationInProgress: There's already a shutdown or sleep "
        "operation in progress";
    EXPECT_EQ(shutdownNow(), ShutdownError::failed(text));
    EXPECT_EQ(log.lines(), Lines{"shutdown: logind error: " + text});
}

TEST_F(LogindShutdownerTest, AbsentLogindFailsWithTheBussOwnError) {
    const std::optional<ShutdownError> error = shutdownNow();
    ASSERT_TRUE(error.has_value());
    EXPECT_EQ(error->kind, ShutdownError::Kind::failed);
    EXPECT_TRUE(error->text.starts_with("org.freedesktop.DBus.Error.ServiceUnknown: "))
        << error->text;
    EXPECT_NE(error->text.find("org.freedesktop.login1"), std::string::npos) << error->text;
    EXPECT_EQ(log.lines(), Lines{"shutdown: logind error: " + error->text});
}

TEST_F(LogindShutdownerTest, AbsentLogindFailsTheProbe) {
    const AutomationOutcome outcome = probeNow();
    EXPECT_EQ(outcome.kind, AutomationOutcome::Kind::failed);
    EXPECT_TRUE(outcome.text.starts_with("org.freedesktop.DBus.Error.ServiceUnknown: "))
        << outcome.text;
}

TEST_F(LogindShutdownerTest, LogindThatNeverAnswersTimesOut) {
    auto logind = startLogind(FakeLogindScript::poweringOff(PowerOff::ignore));
    const std::string text = "logind timed out: no answer within 0.3 s";
    EXPECT_EQ(shutdownNow(quick), ShutdownError::failed(text));
    EXPECT_EQ(log.lines(), Lines{"shutdown: logind error: " + text});
}

TEST_F(LogindShutdownerTest, SlowShutdownNeverBlocksTheCaller) {
    auto logind = startLogind(FakeLogindScript::poweringOff(PowerOff::hold));
    LogindShutdowner shutdowner = make();
    std::optional<std::optional<ShutdownError>> result;
    shutdowner.shutdown([&](std::optional<ShutdownError> error) { result = std::move(error); });
    EXPECT_FALSE(result.has_value());
    EXPECT_EQ(queue.size(), 0U);
    logind->release();
    ASSERT_TRUE(queue.runNext());
    ASSERT_TRUE(result.has_value());
    EXPECT_EQ(*result, std::nullopt);
    EXPECT_EQ(log.lines(), Lines{"shutdown: logind finished: ok"});
}

TEST_F(LogindShutdownerTest, NoSystemBusFailsWithTheSystemsText) {
    // The call below is synchronous, so no other thread reads the address meanwhile.
    useSystemBus("unix:path=/nonexistent/velmora/bus");
    const AutomationOutcome outcome = askCanPowerOff(std::chrono::seconds(1));
    useSystemBus(bus->address());
    EXPECT_EQ(outcome.kind, AutomationOutcome::Kind::failed);
    EXPECT_NE(outcome.text.find("No such file or directory"), std::string::npos) << outcome.text;
}

}  // namespace
}  // namespace velmora
