#include "app/core/menu_model.hpp"

#include "policy/constants.hpp"

namespace velmora {

namespace {

MenuItem separatorItem() {
    return MenuItem{"", std::nullopt, ""};
}

MenuItem appearanceItem(AppearancePref pref) {
    return MenuItem{"Appearance: " + std::string(title(pref)), appearanceAction(pref), ""};
}

}  // namespace

std::vector<Submenu> mainMenu() {
    Submenu application{
        "",
        {
            MenuItem{"Settings\u2026", MenuAction::settings, ","},
            separatorItem(),
            MenuItem{"Quit " + std::string(watchdog::appName), MenuAction::quit, "q"},
        }};
    Submenu test{"Test",
                 {MenuItem{"Test emergency (simulation, never shuts down)",
                           MenuAction::testEmergency, "t"}}};
    Submenu view{"View",
                 {
                     MenuItem{"Expand", MenuAction::expand, "e"},
                     MenuItem{"Collapse", MenuAction::collapse, "w"},
                     separatorItem(),
                 }};
    for (const auto pref : allAppearances)
        view.items.push_back(appearanceItem(pref));
    return {application, test, view};
}

MenuAction appearanceAction(AppearancePref pref) {
    switch (pref) {
        case AppearancePref::light:
            return MenuAction::appearanceLight;
        case AppearancePref::dark:
            return MenuAction::appearanceDark;
        case AppearancePref::autoTheme:
            break;
    }
    return MenuAction::appearanceAuto;
}

std::optional<AppearancePref> appearanceOf(MenuAction action) {
    switch (action) {
        case MenuAction::appearanceAuto:
            return AppearancePref::autoTheme;
        case MenuAction::appearanceLight:
            return AppearancePref::light;
        case MenuAction::appearanceDark:
            return AppearancePref::dark;
        default:
            return std::nullopt;
    }
}

}  // namespace velmora
