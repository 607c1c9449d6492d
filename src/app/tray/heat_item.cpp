#include "app/tray/heat_item.hpp"

#include <gtk/gtk.h>
#include <libayatana-appindicator/app-indicator.h>

#include <array>
#include <utility>

#include "policy/constants.hpp"

namespace velmora {

namespace {

constexpr const char* watcherName = "org.kde.StatusNotifierWatcher";
constexpr const char* noHostLine = "ui: no tray host; the window is the only view";
// The widest title the item shows, so that the panel keeps its width as the digits change.
constexpr const char* labelGuide = "EXTREME HEAT · 100°";

std::string appIconPrefix() {
    return std::string(bundleIdentifier);
}

}  // namespace

std::string heatIconName(HeatColor color) {
    switch (color) {
        case HeatColor::yellow:
            return appIconPrefix() + "-heat-warm-symbolic";
        case HeatColor::red:
            return appIconPrefix() + "-heat-hot-symbolic";
        case HeatColor::label:
            break;
    }
    return appIconPrefix() + "-heat-normal-symbolic";
}

std::string alarmIconName() {
    return appIconPrefix() + "-alarm-symbolic";
}

struct HeatItem::Parts {
    HeatItemActions actions;
    AppIndicator* indicator = nullptr;
    GtkWidget* menu = nullptr;
    std::array<GtkWidget*, allAppearances.size()> appearanceItems{};
    GtkWidget* startAtLoginItem = nullptr;
    guint watch = 0;
    /// Set while the item changes its own check marks, so that they do not act.
    bool quiet = false;
    std::optional<bool> hostSeen;
    std::string heatTitle;
    HeatColor heatColor = HeatColor::label;
    std::optional<std::string> countdownTitle;

    void log(const std::string& line) const {
        if (actions.log) actions.log(line);
    }
};

namespace {

using Parts = HeatItem::Parts;

void onPlainItem(GtkMenuItem* /*item*/, gpointer data) {
    const auto* action = static_cast<std::function<void()>*>(data);
    if (*action) (*action)();
}

/// `action` lives in Parts, which outlives the menu.
GtkWidget* addItem(GtkWidget* menu, const char* text, std::function<void()>& action) {
    GtkWidget* item = gtk_menu_item_new_with_label(text);
    g_signal_connect(item, "activate", G_CALLBACK(onPlainItem), &action);
    gtk_menu_shell_append(GTK_MENU_SHELL(menu), item);
    return item;
}

void addSeparator(GtkWidget* menu) {
    gtk_menu_shell_append(GTK_MENU_SHELL(menu), gtk_separator_menu_item_new());
}

void onAppearanceToggled(GtkCheckMenuItem* item, gpointer data) {
    auto* parts = static_cast<Parts*>(data);
    if (parts->quiet || !gtk_check_menu_item_get_active(item)) return;
    for (std::size_t i = 0; i < allAppearances.size(); ++i) {
        if (parts->appearanceItems[i] == GTK_WIDGET(item) && parts->actions.chooseAppearance) {
            parts->actions.chooseAppearance(allAppearances[i]);
        }
    }
}

void onStartAtLoginToggled(GtkCheckMenuItem* item, gpointer data) {
    auto* parts = static_cast<Parts*>(data);
    if (parts->quiet) return;
    const bool wanted = gtk_check_menu_item_get_active(item) != FALSE;
    const bool now = parts->actions.startAtLogin ? parts->actions.startAtLogin(wanted) : false;
    if (now == wanted) return;
    parts->quiet = true;
    gtk_check_menu_item_set_active(item, now ? TRUE : FALSE);
    parts->quiet = false;
}

void addAppearanceItems(Parts& parts) {
    GSList* group = nullptr;
    for (std::size_t i = 0; i < allAppearances.size(); ++i) {
        const auto text = "Appearance: " + std::string(title(allAppearances[i]));
        GtkWidget* item = gtk_radio_menu_item_new_with_label(group, text.c_str());
        group = gtk_radio_menu_item_get_group(GTK_RADIO_MENU_ITEM(item));
        g_signal_connect(item, "toggled", G_CALLBACK(onAppearanceToggled), &parts);
        gtk_menu_shell_append(GTK_MENU_SHELL(parts.menu), item);
        parts.appearanceItems[i] = item;
    }
}

void buildMenu(Parts& parts) {
    parts.menu = gtk_menu_new();
    g_object_ref_sink(parts.menu);
    GtkWidget* live = addItem(parts.menu, "Live readings\u2026", parts.actions.liveReadings);
    const auto open = "Open " + std::string(watchdog::appName);
    addItem(parts.menu, open.c_str(), parts.actions.openWindow);
    addSeparator(parts.menu);
    addItem(parts.menu, "Test emergency (simulation, never shuts down)",
            parts.actions.testEmergency);
    addSeparator(parts.menu);
    addAppearanceItems(parts);
    addSeparator(parts.menu);
    parts.startAtLoginItem = gtk_check_menu_item_new_with_label("Start at login");
    g_signal_connect(parts.startAtLoginItem, "toggled", G_CALLBACK(onStartAtLoginToggled), &parts);
    gtk_menu_shell_append(GTK_MENU_SHELL(parts.menu), parts.startAtLoginItem);
    addSeparator(parts.menu);
    const auto quit = "Quit " + std::string(watchdog::appName);
    addItem(parts.menu, quit.c_str(), parts.actions.quit);
    gtk_widget_show_all(parts.menu);
    app_indicator_set_menu(parts.indicator, GTK_MENU(parts.menu));
    // A middle click on the item opens the live readings, as the first menu entry does.
    app_indicator_set_secondary_activate_target(parts.indicator, live);
}

void onWatcherAppeared(GDBusConnection* /*bus*/, const gchar* /*name*/, const gchar* /*owner*/,
                       gpointer data) {
    auto* parts = static_cast<Parts*>(data);
    if (parts->hostSeen == false) parts->log("ui: tray host found; the heat item is shown");
    parts->hostSeen = true;
}

void onWatcherVanished(GDBusConnection* /*bus*/, const gchar* /*name*/, gpointer data) {
    auto* parts = static_cast<Parts*>(data);
    if (parts->hostSeen != false) parts->log(noHostLine);
    parts->hostSeen = false;
}

}  // namespace

HeatItem::HeatItem(const std::string& title, const std::filesystem::path& iconSearchPath,
                   HeatItemActions actions)
    : parts_(std::make_unique<Parts>()) {
    parts_->actions = std::move(actions);
    parts_->heatTitle = title;
    const auto id = std::string(bundleIdentifier);
    parts_->indicator = app_indicator_new(id.c_str(), heatIconName(HeatColor::label).c_str(),
                                          APP_INDICATOR_CATEGORY_HARDWARE);
    if (!iconSearchPath.empty()) {
        app_indicator_set_icon_theme_path(parts_->indicator, iconSearchPath.c_str());
    }
    app_indicator_set_title(parts_->indicator, std::string(watchdog::appName).c_str());
    app_indicator_set_attention_icon_full(parts_->indicator, alarmIconName().c_str(),
                                          "Shutdown countdown");
    buildMenu(*parts_);
    show();
    app_indicator_set_status(parts_->indicator, APP_INDICATOR_STATUS_ACTIVE);
    parts_->watch = g_bus_watch_name(G_BUS_TYPE_SESSION, watcherName, G_BUS_NAME_WATCHER_FLAGS_NONE,
                                     onWatcherAppeared, onWatcherVanished, parts_.get(), nullptr);
}

HeatItem::~HeatItem() {
    if (parts_->watch != 0) g_bus_unwatch_name(parts_->watch);
    g_object_unref(parts_->indicator);
    gtk_widget_destroy(parts_->menu);
    g_object_unref(parts_->menu);
}

void HeatItem::show() {
    const auto text = label();
    app_indicator_set_label(parts_->indicator, text.c_str(), labelGuide);
    const auto icon = heatIconName(parts_->heatColor);
    const auto description = "Heat " + parts_->heatTitle;
    app_indicator_set_icon_full(parts_->indicator, icon.c_str(), description.c_str());
}

void HeatItem::setTitle(const std::string& title, HeatColor color) {
    if (title == parts_->heatTitle && color == parts_->heatColor) return;
    parts_->heatTitle = title;
    parts_->heatColor = color;
    show();
}

void HeatItem::showCountdown(const std::string& title) {
    if (parts_->countdownTitle == title) return;
    const bool starting = !parts_->countdownTitle;
    parts_->countdownTitle = title;
    show();
    if (starting) app_indicator_set_status(parts_->indicator, APP_INDICATOR_STATUS_ATTENTION);
}

void HeatItem::endCountdown() {
    if (!parts_->countdownTitle) return;
    parts_->countdownTitle.reset();
    show();
    app_indicator_set_status(parts_->indicator, APP_INDICATOR_STATUS_ACTIVE);
}

void HeatItem::setAppearance(AppearancePref pref) {
    parts_->quiet = true;
    for (std::size_t i = 0; i < allAppearances.size(); ++i) {
        if (allAppearances[i] == pref) {
            gtk_check_menu_item_set_active(GTK_CHECK_MENU_ITEM(parts_->appearanceItems[i]), TRUE);
        }
    }
    parts_->quiet = false;
}

void HeatItem::setStartAtLogin(bool on) {
    parts_->quiet = true;
    gtk_check_menu_item_set_active(GTK_CHECK_MENU_ITEM(parts_->startAtLoginItem),
                                   on ? TRUE : FALSE);
    parts_->quiet = false;
}

std::string HeatItem::label() const {
    return parts_->countdownTitle ? *parts_->countdownTitle : parts_->heatTitle;
}

std::string HeatItem::iconName() const {
    return heatIconName(parts_->heatColor);
}

bool HeatItem::attention() const {
    return parts_->countdownTitle.has_value();
}

bool HeatItem::hostPresent() const {
    return parts_->hostSeen == true;
}

}  // namespace velmora
