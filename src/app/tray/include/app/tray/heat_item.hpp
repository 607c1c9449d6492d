#pragma once

#include <filesystem>
#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <string_view>

#include "app/core/appearance.hpp"
#include "app/core/shell.hpp"

namespace velmora {

/// The icon that stands for a heat colour in the panel (a panel label has no colour).
std::string heatIconName(HeatColor color);
/// The icon of the attention status during a countdown.
std::string alarmIconName();

/// What the heat item's menu asks the application to do.
struct HeatItemActions {
    std::function<void()> liveReadings;
    std::function<void()> openWindow;
    std::function<void()> testEmergency;
    std::function<void(AppearancePref)> chooseAppearance;
    /// Switches starting at login on or off; returns whether it is on afterwards.
    std::function<bool(bool)> startAtLogin;
    std::function<void()> quit;
    std::function<void(const std::string&)> log;
};

/// The application's item in the panel's tray, a StatusNotifierItem made through
/// libayatana-appindicator3: a label with the heat item's title, an icon for its colour, the
/// attention status during a countdown, and a menu. Lives on the GTK main thread.
class HeatItem {
  public:
    /// `iconSearchPath` holds an icon theme folder with the item's icons when they are not
    /// installed in the system's theme (a build tree); empty for none.
    HeatItem(const std::string& title, const std::filesystem::path& iconSearchPath,
             HeatItemActions actions);
    ~HeatItem();
    HeatItem(const HeatItem&) = delete;
    HeatItem& operator=(const HeatItem&) = delete;
    HeatItem(HeatItem&&) = delete;
    HeatItem& operator=(HeatItem&&) = delete;

    void setTitle(const std::string& title, HeatColor color);
    /// Shows `title` instead of the heat title and asks for attention with the alarm icon.
    void showCountdown(const std::string& title);
    /// Back to the heat title, icon and the active status.
    void endCountdown();
    /// Checks the appearance choice in the menu without acting on it.
    void setAppearance(AppearancePref pref);
    /// Checks "Start at login" without acting on it.
    void setStartAtLogin(bool on);

    /// What the panel is shown now.
    std::string label() const;
    std::string iconName() const;
    bool attention() const;
    /// Whether a tray host (a StatusNotifierWatcher) was on the session bus when last seen.
    bool hostPresent() const;

    struct Parts;

  private:
    void show();
    std::unique_ptr<Parts> parts_;
};

}  // namespace velmora
