#pragma once

#include <gtk/gtk.h>

#include <functional>
#include <vector>

#include "app/core/menu_model.hpp"

namespace velmora {

/// The application's actions ("app.settings", "app.quit", "app.test-emergency",
/// "app.expand", "app.collapse" and the radio "app.appearance" with the targets "auto",
/// "light" and "dark"); each reports its menu action to `chosen`.
void addActions(GActionMap* map, std::function<void(MenuAction)> chosen);

/// The header bar's menu: one section per submenu, split again at separators.
GMenuModel* buildMenuModel(const std::vector<Submenu>& menu);

/// Ctrl plus each item's key, e.g. Ctrl+, for Settings… and Ctrl+T for the test emergency.
void installAccelerators(GtkApplication* application, const std::vector<Submenu>& menu);

/// Moves the radio check of the appearance items to `pref`.
void showAppearanceChecked(GActionMap* map, AppearancePref pref);

/// "app.settings", "app.appearance::dark", …: what a menu item activates.
std::string detailedActionName(MenuAction action);

}  // namespace velmora
