#pragma once

#include <optional>
#include <string>
#include <vector>

#include "app/core/appearance.hpp"

namespace velmora {

/// Everything a menu item can ask the application to do.
enum class MenuAction {
    settings,
    quit,
    testEmergency,
    expand,
    collapse,
    appearanceAuto,
    appearanceLight,
    appearanceDark,
    /// Check items of the heat item's menu, switched each time they are chosen.
    notifyWhenHot,
    figureAsText,
};

struct MenuItem {
    std::string title;
    std::optional<MenuAction> action;  // absent for a separator
    /// Pressed together with the platform's command modifier; empty for none.
    std::string keyEquivalent;

    bool separator() const { return !action.has_value(); }
    bool operator==(const MenuItem&) const = default;
};

struct Submenu {
    std::string title;  // empty for the application menu
    std::vector<MenuItem> items;
    bool operator==(const Submenu&) const = default;
};

/// The main menu: the application menu, "Test" and "View", in that order.
std::vector<Submenu> mainMenu();

MenuAction appearanceAction(AppearancePref pref);
/// The preference an appearance item chooses; nothing for the other actions.
std::optional<AppearancePref> appearanceOf(MenuAction action);

}  // namespace velmora
