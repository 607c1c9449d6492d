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

/// The icon that stands for a heat colour in the panel when the figure is shown as text.
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
    /// "Notify me when it gets hot" was switched.
    std::function<void(bool)> notifyWhenHot;
    /// "Temperature as text beside the icon" was switched.
    std::function<void(bool)> figureAsText;
    std::function<void()> quit;
    std::function<void(const std::string&)> log;
};

/// The application's item in the panel's tray: a StatusNotifierItem served over D-Bus, with a
/// com.canonical.dbusmenu menu. Its icon carries the temperature on a badge in the level's
/// colour (drawn at run time, as pixmaps and as files in the user's runtime folder), its
/// tooltip says the level, the figure and what heats the machine; during a countdown it asks
/// for attention. Lives on the GTK main thread.
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
    /// The figure the icon carries and the tooltip.
    void setDetails(const HeatItemDetails& details);
    /// Shows `title` as the label and asks for attention with the alarm icon.
    void showCountdown(const std::string& title);
    /// Back to the heat icon, label and the active status.
    void endCountdown();
    /// Checks the appearance choice in the menu without acting on it.
    void setAppearance(AppearancePref pref);
    /// Checks "Start at login" without acting on it.
    void setStartAtLogin(bool on);
    /// Checks "Notify me when it gets hot" without acting on it.
    void setNotifyWhenHot(bool on);
    /// Where hosts draw a label (Ayatana's, GNOME's extension) the figure shows once: as text
    /// in the label with a plain level icon when on, else only in the icon (the default,
    /// which every host shows).
    void setFigureAsText(bool on);

    /// What the panel is shown now: the label (empty when the icon carries the figure),
    /// the icon's name, the tooltip's text.
    std::string label() const;
    std::string iconName() const;
    std::string tooltipText() const;
    bool attention() const;
    /// Whether a tray host (a StatusNotifierWatcher) was on the session bus when last seen.
    bool hostPresent() const;
    /// The folder of the icons drawn at run time; empty when it could not be made.
    std::filesystem::path runtimeIconFolder() const;

    struct Parts;

  private:
    void show();
    std::unique_ptr<Parts> parts_;
};

}  // namespace velmora
