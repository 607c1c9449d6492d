#pragma once

// The heat item's insides, shared by its files (the item, its D-Bus object, its menu).
#include <gio/gio.h>
#include <libdbusmenu-glib/menuitem.h>
#include <libdbusmenu-glib/server.h>

#include <array>
#include <memory>
#include <optional>
#include <string>

#include "app/tray/figure_icon.hpp"
#include "app/tray/heat_item.hpp"

namespace velmora {

struct HeatItem::Parts {
    HeatItemActions actions;
    std::filesystem::path themePath;
    std::unique_ptr<RuntimeIconDir> icons;

    // The D-Bus side.
    GDBusConnection* bus = nullptr;
    std::string busName;
    guint nameOwner = 0;
    guint registration = 0;
    guint watch = 0;
    bool nameOwned = false;
    bool watcherPresent = false;
    std::optional<bool> hostSeen;

    // The menu.
    DbusmenuServer* menuServer = nullptr;
    DbusmenuMenuitem* menuRoot = nullptr;
    std::array<DbusmenuMenuitem*, allAppearances.size()> appearanceItems{};
    DbusmenuMenuitem* startAtLoginItem = nullptr;
    DbusmenuMenuitem* notifyItem = nullptr;
    DbusmenuMenuitem* figureTextItem = nullptr;

    // What is shown.
    std::string heatTitle;
    HeatColor heatColor = HeatColor::label;
    std::optional<std::string> countdownTitle;
    std::optional<double> celsius;
    std::string tooltipTitle;
    std::string tooltipText;
    bool figureAsText = false;

    void log(const std::string& line) const {
        if (actions.log) actions.log(line);
    }
    /// The figure's digits, as the icon shows them.
    std::string digits() const { return figureDigits(celsius); }
    std::string iconName() const;
    std::string label() const;
    std::string status() const { return countdownTitle ? "NeedsAttention" : "Active"; }
};

/// The item's object path and menu path on the bus.
inline constexpr const char* itemPath = "/StatusNotifierItem";
inline constexpr const char* menuPath = "/MenuBar";
inline constexpr const char* itemInterface = "org.kde.StatusNotifierItem";

/// Serves the item on the session bus and registers it with every watcher that comes.
void startItemService(HeatItem::Parts& parts);
void stopItemService(HeatItem::Parts& parts);
/// Tells hosts that these changed.
void emitItemSignal(const HeatItem::Parts& parts, const char* signal, GVariant* args = nullptr);

void buildItemMenu(HeatItem::Parts& parts);
void destroyItemMenu(HeatItem::Parts& parts);
/// Sets a check mark without acting on it.
void setMenuCheck(DbusmenuMenuitem* item, bool on);

}  // namespace velmora
