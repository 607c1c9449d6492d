#pragma once

#include <string_view>

// The build names the polkit rule example's installed place once, for these texts, the service
// unit and the install rule.
#ifndef VELMORA_RULES_EXAMPLE
#error "VELMORA_RULES_EXAMPLE (the polkit rule example's installed path) comes from the build"
#endif

namespace velmora {

// Not "linux": with GNU extensions that word is a predefined macro.
enum class Platform { macos, gnuLinux };

/// Every user- or log-facing text that names the platform's own mechanism. The macOS column
/// is the product's original wording; the Linux column names logind, polkit and the derived
/// thermal state instead. Both columns are always compiled so that both can be tested.
struct PlatformTexts {
    std::string_view thermalNote;
    std::string_view permissionMessage;
    /// Where the "open settings" buttons lead for the shutdown permission.
    std::string_view automationPaneURL;
    std::string_view openingPermissionSettingsLog;
    /// The harmless permission check and the shutdown request, as the actuator runs them.
    std::string_view probeScript;
    std::string_view shutdownScript;
    /// The tool word in "shutdown: <tool> finished: ok" and its siblings.
    std::string_view shutdownTool;
    /// How the shutdown is made, in the engine's log lines.
    std::string_view shutdownMechanism;
    std::string_view tooLateToCancel;
    std::string_view cancelRefusedLog;
    std::string_view osErrorPrefix;
    std::string_view permissionCheckFailedPrefix;
    std::string_view tipUnplugPower;
    std::string_view tipClearVents;
    /// How the real permission check is shown in the log, before the quoted probe.
    std::string_view probeCommand;
    /// The refusal a dry run pretends, in the words the platform itself would use.
    std::string_view simulatedDeniedText;
    /// Names the pretended refusal in the dry run's log lines.
    std::string_view simulatedDenialName;
    /// Where the live dashboard says the thermal state comes from.
    std::string_view thermalSource;
};

inline constexpr PlatformTexts macosTexts{
    .thermalNote =
        "macOS reports a thermal state, not °C; Velmora Heat Monitor uses the OS "
        "critical state in place of the 100°C line.",
    .permissionMessage =
        "Allow Velmora Heat Monitor in System Settings > Privacy & Security > "
        "Automation (System Events), or auto-shutdown cannot run.",
    .automationPaneURL =
        "x-apple.systempreferences:com.apple.preference.security?Privacy_Automation",
    .openingPermissionSettingsLog = "ui: opening System Settings > Privacy & Security > Automation",
    .probeScript = "tell application \"System Events\" to get name",
    .shutdownScript = "tell application \"System Events\" to shut down",
    .shutdownTool = "osascript",
    .shutdownMechanism = "osascript System Events",
    .tooLateToCancel = "Too late to cancel: your Mac is already shutting down.",
    .cancelRefusedLog =
        "stage-c: cancel refused: the shutdown call already ran (no way to abort on macOS)",
    .osErrorPrefix = "macOS reported an error: ",
    .permissionCheckFailedPrefix = "Could not check the Automation permission: ",
    .tipUnplugPower = "Unplug power if safe — battery mode runs cooler on many Macs",
    .tipClearVents = "Lift the lid / clear vents; keep Mac on a hard surface",
    .probeCommand = "osascript -e",
    .simulatedDeniedText =
        "execution error: Not authorized to send Apple events to System Events. (-1743)",
    .simulatedDenialName = "-1743",
    .thermalSource = "ProcessInfo.thermalState",
};

inline constexpr PlatformTexts linuxTexts{
    .thermalNote =
        "Linux reports no single thermal state, not °C; Velmora Heat Monitor derives "
        "one from the kernel's trip points and uses its critical state in place of "
        "the 100°C line.",
    .permissionMessage =
        "Allow Velmora Heat Monitor to power off this computer (polkit action "
        "org.freedesktop.login1.power-off), or auto-shutdown cannot run.",
    .automationPaneURL = "file://" VELMORA_RULES_EXAMPLE,
    .openingPermissionSettingsLog = "ui: opening the polkit power-off rule example",
    .probeScript = "org.freedesktop.login1.Manager.CanPowerOff",
    .shutdownScript = "org.freedesktop.login1.Manager.PowerOff(false)",
    .shutdownTool = "logind",
    .shutdownMechanism = "logind PowerOff",
    .tooLateToCancel = "Too late to cancel: this computer is already shutting down.",
    .cancelRefusedLog =
        "stage-c: cancel refused: the shutdown call already ran (no way to abort a logind "
        "power-off)",
    .osErrorPrefix = "logind reported an error: ",
    .permissionCheckFailedPrefix = "Could not check the power-off permission: ",
    .tipUnplugPower = "Unplug power if safe — battery mode runs cooler on many laptops",
    .tipClearVents = "Lift the lid / clear vents; keep this computer on a hard surface",
    .probeCommand = "logind",
    .simulatedDeniedText =
        "org.freedesktop.DBus.Error.InteractiveAuthorizationRequired: "
        "Interactive authentication required.",
    .simulatedDenialName = "polkit",
    .thermalSource = "derived thermal state",
};

constexpr const PlatformTexts& textsFor(Platform platform) {
    return platform == Platform::macos ? macosTexts : linuxTexts;
}

#if defined(__APPLE__)
inline constexpr Platform hostPlatform = Platform::macos;
#else
inline constexpr Platform hostPlatform = Platform::gnuLinux;
#endif

/// The running platform's column.
constexpr const PlatformTexts& texts() {
    return textsFor(hostPlatform);
}

}  // namespace velmora
