// The heat item's menu, served as com.canonical.dbusmenu by libdbusmenu-glib.
#include <libdbusmenu-glib/client.h>

#include "heat_item_parts.hpp"
#include "policy/constants.hpp"

namespace velmora {

namespace {

using Parts = HeatItem::Parts;

DbusmenuMenuitem* addEntry(Parts& parts, const std::string& text) {
    DbusmenuMenuitem* item = dbusmenu_menuitem_new();
    dbusmenu_menuitem_property_set(item, DBUSMENU_MENUITEM_PROP_LABEL, text.c_str());
    dbusmenu_menuitem_child_append(parts.menuRoot, item);
    g_object_unref(item);  // the root keeps it
    return item;
}

void addSeparator(Parts& parts) {
    DbusmenuMenuitem* item = dbusmenu_menuitem_new();
    dbusmenu_menuitem_property_set(item, DBUSMENU_MENUITEM_PROP_TYPE,
                                   DBUSMENU_CLIENT_TYPES_SEPARATOR);
    dbusmenu_menuitem_child_append(parts.menuRoot, item);
    g_object_unref(item);
}

DbusmenuMenuitem* addToggle(Parts& parts, const std::string& text, const char* kind) {
    DbusmenuMenuitem* item = addEntry(parts, text);
    dbusmenu_menuitem_property_set(item, DBUSMENU_MENUITEM_PROP_TOGGLE_TYPE, kind);
    setMenuCheck(item, false);
    return item;
}

/// Connects a plain entry to an action kept in Parts, which outlives the menu.
void onPlain(DbusmenuMenuitem* /*item*/, guint /*timestamp*/, gpointer data) {
    const auto* action = static_cast<std::function<void()>*>(data);
    if (*action) (*action)();
}

void addPlain(Parts& parts, const std::string& text, std::function<void()>& action) {
    g_signal_connect(addEntry(parts, text), DBUSMENU_MENUITEM_SIGNAL_ITEM_ACTIVATED,
                     G_CALLBACK(onPlain), &action);
}

bool checked(DbusmenuMenuitem* item) {
    return dbusmenu_menuitem_property_get_int(item, DBUSMENU_MENUITEM_PROP_TOGGLE_STATE) ==
           DBUSMENU_MENUITEM_TOGGLE_STATE_CHECKED;
}

void onAppearance(DbusmenuMenuitem* item, guint /*timestamp*/, gpointer data) {
    auto* parts = static_cast<Parts*>(data);
    for (std::size_t i = 0; i < allAppearances.size(); ++i) {
        if (parts->appearanceItems[i] != item) continue;
        for (auto* other : parts->appearanceItems)
            setMenuCheck(other, other == item);
        if (parts->actions.chooseAppearance) parts->actions.chooseAppearance(allAppearances[i]);
    }
}

void onStartAtLogin(DbusmenuMenuitem* item, guint /*timestamp*/, gpointer data) {
    auto* parts = static_cast<Parts*>(data);
    const bool wanted = !checked(item);
    const bool now = parts->actions.startAtLogin ? parts->actions.startAtLogin(wanted) : false;
    setMenuCheck(item, now);
}

void onNotify(DbusmenuMenuitem* item, guint /*timestamp*/, gpointer data) {
    auto* parts = static_cast<Parts*>(data);
    const bool wanted = !checked(item);
    setMenuCheck(item, wanted);
    if (parts->actions.notifyWhenHot) parts->actions.notifyWhenHot(wanted);
}

void onFigureText(DbusmenuMenuitem* item, guint /*timestamp*/, gpointer data) {
    auto* parts = static_cast<Parts*>(data);
    const bool wanted = !checked(item);
    setMenuCheck(item, wanted);
    if (parts->actions.figureAsText) parts->actions.figureAsText(wanted);
}

void addAppearanceItems(Parts& parts) {
    for (std::size_t i = 0; i < allAppearances.size(); ++i) {
        auto* item = addToggle(parts, "Appearance: " + std::string(title(allAppearances[i])),
                               DBUSMENU_MENUITEM_TOGGLE_RADIO);
        g_signal_connect(item, DBUSMENU_MENUITEM_SIGNAL_ITEM_ACTIVATED, G_CALLBACK(onAppearance),
                         &parts);
        parts.appearanceItems[i] = item;
    }
    setMenuCheck(parts.appearanceItems[0], true);
}

}  // namespace

void setMenuCheck(DbusmenuMenuitem* item, bool on) {
    dbusmenu_menuitem_property_set_int(
        item, DBUSMENU_MENUITEM_PROP_TOGGLE_STATE,
        on ? DBUSMENU_MENUITEM_TOGGLE_STATE_CHECKED : DBUSMENU_MENUITEM_TOGGLE_STATE_UNCHECKED);
}

void buildItemMenu(Parts& parts) {
    parts.menuRoot = dbusmenu_menuitem_new();
    dbusmenu_menuitem_property_set(parts.menuRoot, DBUSMENU_MENUITEM_PROP_CHILD_DISPLAY,
                                   DBUSMENU_MENUITEM_CHILD_DISPLAY_SUBMENU);
    addPlain(parts, "Live readings\u2026", parts.actions.liveReadings);
    addPlain(parts, "Open " + std::string(watchdog::appName), parts.actions.openWindow);
    addSeparator(parts);
    addPlain(parts, "Test emergency (simulation, never shuts down)", parts.actions.testEmergency);
    addSeparator(parts);
    addAppearanceItems(parts);
    addSeparator(parts);
    parts.notifyItem =
        addToggle(parts, "Notify me when it gets hot", DBUSMENU_MENUITEM_TOGGLE_CHECK);
    g_signal_connect(parts.notifyItem, DBUSMENU_MENUITEM_SIGNAL_ITEM_ACTIVATED,
                     G_CALLBACK(onNotify), &parts);
    setMenuCheck(parts.notifyItem, true);
    parts.figureTextItem =
        addToggle(parts, "Temperature as text beside the icon", DBUSMENU_MENUITEM_TOGGLE_CHECK);
    g_signal_connect(parts.figureTextItem, DBUSMENU_MENUITEM_SIGNAL_ITEM_ACTIVATED,
                     G_CALLBACK(onFigureText), &parts);
    parts.startAtLoginItem = addToggle(parts, "Start at login", DBUSMENU_MENUITEM_TOGGLE_CHECK);
    g_signal_connect(parts.startAtLoginItem, DBUSMENU_MENUITEM_SIGNAL_ITEM_ACTIVATED,
                     G_CALLBACK(onStartAtLogin), &parts);
    addSeparator(parts);
    addPlain(parts, "Quit " + std::string(watchdog::appName), parts.actions.quit);
    parts.menuServer = dbusmenu_server_new(menuPath);
    dbusmenu_server_set_root(parts.menuServer, parts.menuRoot);
}

void destroyItemMenu(Parts& parts) {
    if (parts.menuServer != nullptr) g_object_unref(parts.menuServer);
    if (parts.menuRoot != nullptr) g_object_unref(parts.menuRoot);
    parts.menuServer = nullptr;
    parts.menuRoot = nullptr;
}

}  // namespace velmora
