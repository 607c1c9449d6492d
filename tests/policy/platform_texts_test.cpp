#include "policy/platform_texts.hpp"

#include <gtest/gtest.h>

#include <chrono>
#include <string_view>

#include "policy/constants.hpp"

namespace velmora {
namespace {

TEST(MacosTexts, AreTheOriginalWording) {
    EXPECT_EQ(macosTexts.thermalNote,
              "macOS reports a thermal state, not °C; Velmora Heat Monitor uses the OS critical "
              "state in place of the 100°C line.");
    EXPECT_EQ(macosTexts.permissionMessage,
              "Allow Velmora Heat Monitor in System Settings > Privacy & Security > Automation "
              "(System Events), or auto-shutdown cannot run.");
    EXPECT_EQ(macosTexts.probeScript, "tell application \"System Events\" to get name");
    EXPECT_EQ(macosTexts.shutdownScript, "tell application \"System Events\" to shut down");
    EXPECT_EQ(macosTexts.shutdownMechanism, "osascript System Events");
    EXPECT_EQ(macosTexts.tooLateToCancel, "Too late to cancel: your Mac is already shutting down.");
    EXPECT_EQ(macosTexts.osErrorPrefix, "macOS reported an error: ");
}

TEST(MacosTexts, AutomationLinkOpensThePrivacyAutomationPane) {
    const std::string_view url = macosTexts.automationPaneURL;
    EXPECT_TRUE(url.starts_with("x-apple.systempreferences:"));
    EXPECT_NE(url.find("com.apple.preference.security"), std::string_view::npos);
    EXPECT_TRUE(url.ends_with("?Privacy_Automation"));
}

TEST(LinuxTexts, NameLogindPolkitAndThisComputer) {
    EXPECT_EQ(linuxTexts.shutdownMechanism, "logind PowerOff");
    EXPECT_EQ(linuxTexts.shutdownTool, "logind");
    EXPECT_NE(linuxTexts.permissionMessage.find("polkit"), std::string_view::npos);
    EXPECT_NE(linuxTexts.tooLateToCancel.find("this computer"), std::string_view::npos);
    EXPECT_NE(linuxTexts.thermalNote.find("100°C line"), std::string_view::npos);
}

// Every row of the Linux column must be free of the Mac's own mechanisms.
TEST(LinuxTexts, NeverNameTheMacMechanisms) {
    const PlatformTexts& t = linuxTexts;
    for (std::string_view text :
         {t.thermalNote, t.permissionMessage, t.automationPaneURL, t.openingPermissionSettingsLog,
          t.probeScript, t.shutdownScript, t.shutdownTool, t.shutdownMechanism, t.tooLateToCancel,
          t.cancelRefusedLog, t.osErrorPrefix, t.permissionCheckFailedPrefix, t.tipUnplugPower,
          t.tipClearVents}) {
        EXPECT_TRUE(text.find("osascript") == std::string_view::npos) << text;
        EXPECT_TRUE(text.find("Mac") == std::string_view::npos) << text;
        EXPECT_TRUE(text.find("System Events") == std::string_view::npos) << text;
        EXPECT_FALSE(text.empty());
    }
}

TEST(PlatformTexts, HostColumnIsChosenByTheBuild) {
#if defined(__APPLE__)
    EXPECT_EQ(&texts(), &macosTexts);
#else
    EXPECT_EQ(&texts(), &linuxTexts);
#endif
    EXPECT_EQ(&textsFor(Platform::macos), &macosTexts);
    EXPECT_EQ(&textsFor(Platform::gnuLinux), &linuxTexts);
}

TEST(Constants, TuningValues) {
    using namespace std::chrono_literals;
    EXPECT_EQ(watchdog::version, "1.1");
    EXPECT_EQ(watchdog::warmC, 60);
    EXPECT_EQ(watchdog::hotC, 80);
    EXPECT_EQ(watchdog::extremeC, 95);
    EXPECT_EQ(watchdog::criticalC, 100);
    EXPECT_EQ(watchdog::hotSustain, 90s);
    EXPECT_EQ(watchdog::extremeSustain, 60s);
    EXPECT_EQ(watchdog::countdownLength, 10s);
    EXPECT_EQ(watchdog::graceLength, 300s);
    EXPECT_EQ(watchdog::staleGap, 5s);
    EXPECT_EQ(watchdog::simulationLeadIn, 4s);
    EXPECT_EQ(watchdog::failsafeDelay, 30s);
    EXPECT_EQ(watchdog::emergencyAlarmInterval, 15s);
    EXPECT_EQ(watchdog::simulationPeakC, 106);
    EXPECT_EQ(watchdog::cueSeconds, (std::array<int, 4>{5, 3, 2, 1}));
}

}  // namespace
}  // namespace velmora
