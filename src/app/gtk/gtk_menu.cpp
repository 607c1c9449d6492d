#include "app/gtk/gtk_menu.hpp"

#include <array>
#include <memory>
#include <string>
#include <utility>

namespace velmora {

namespace {

struct PlainAction {
    MenuAction action;
    const char* name;
};

constexpr std::array<PlainAction, 5> plainActions{{
    {MenuAction::settings, "settings"},
    {MenuAction::quit, "quit"},
    {MenuAction::testEmergency, "test-emergency"},
    {MenuAction::expand, "expand"},
    {MenuAction::collapse, "collapse"},
}};

constexpr const char* appearanceName = "appearance";

struct ActionTarget {
    std::function<void(MenuAction)> chosen;
    MenuAction action = MenuAction::settings;
};

void onActivate(GSimpleAction* /*action*/, GVariant* /*parameter*/, gpointer data) {
    const auto* target = static_cast<ActionTarget*>(data);
    target->chosen(target->action);
}

void onAppearance(GSimpleAction* /*action*/, GVariant* value, gpointer data) {
    const auto* target = static_cast<ActionTarget*>(data);
    const auto pref = appearanceFromRaw(g_variant_get_string(value, nullptr));
    // The check moves when the application confirms the change (showAppearanceChecked).
    if (pref) target->chosen(appearanceAction(*pref));
}

void freeTarget(gpointer data, GClosure* /*closure*/) {
    delete static_cast<ActionTarget*>(data);
}

/// "," → "comma": GTK names keys, it does not take their characters.
std::string keyName(const std::string& key) {
    if (key == ",") return "comma";
    return key;
}

}  // namespace

std::string detailedActionName(MenuAction action) {
    if (const auto pref = appearanceOf(action)) {
        return std::string("app.") + appearanceName + "::" + std::string(rawValue(*pref));
    }
    for (const auto& plain : plainActions) {
        if (plain.action == action) return std::string("app.") + plain.name;
    }
    return {};
}

void addActions(GActionMap* map, std::function<void(MenuAction)> chosen) {
    for (const auto& plain : plainActions) {
        auto* action = g_simple_action_new(plain.name, nullptr);
        g_signal_connect_data(action, "activate", G_CALLBACK(onActivate),
                              new ActionTarget{chosen, plain.action}, freeTarget, GConnectFlags{});
        g_action_map_add_action(map, G_ACTION(action));
        g_object_unref(action);
    }
    auto* appearance = g_simple_action_new_stateful(appearanceName, G_VARIANT_TYPE_STRING,
                                                    g_variant_new_string("auto"));
    g_signal_connect_data(appearance, "change-state", G_CALLBACK(onAppearance),
                          new ActionTarget{std::move(chosen), MenuAction::appearanceAuto},
                          freeTarget, GConnectFlags{});
    g_action_map_add_action(map, G_ACTION(appearance));
    g_object_unref(appearance);
}

GMenuModel* buildMenuModel(const std::vector<Submenu>& menu) {
    auto* root = g_menu_new();
    for (const auto& submenu : menu) {
        auto* section = g_menu_new();
        const auto flush = [&] {
            if (g_menu_model_get_n_items(G_MENU_MODEL(section)) > 0) {
                g_menu_append_section(root, submenu.title.empty() ? nullptr : submenu.title.c_str(),
                                      G_MENU_MODEL(section));
            }
            g_object_unref(section);
            section = g_menu_new();
        };
        for (const auto& item : submenu.items) {
            if (item.separator()) {
                flush();
                continue;
            }
            g_menu_append(section, item.title.c_str(), detailedActionName(*item.action).c_str());
        }
        flush();
        g_object_unref(section);
    }
    return G_MENU_MODEL(root);
}

void installAccelerators(GtkApplication* application, const std::vector<Submenu>& menu) {
    for (const auto& submenu : menu) {
        for (const auto& item : submenu.items) {
            if (item.separator() || item.keyEquivalent.empty()) continue;
            const auto accel = "<Control>" + keyName(item.keyEquivalent);
            const std::array<const gchar*, 2> accels{accel.c_str(), nullptr};
            gtk_application_set_accels_for_action(
                application, detailedActionName(*item.action).c_str(), accels.data());
        }
    }
}

void showAppearanceChecked(GActionMap* map, AppearancePref pref) {
    auto* action = g_action_map_lookup_action(map, appearanceName);
    if (action == nullptr) return;
    g_simple_action_set_state(G_SIMPLE_ACTION(action),
                              g_variant_new_string(std::string(rawValue(pref)).c_str()));
}

}  // namespace velmora
