// The heat item as a StatusNotifierItem on the session bus: its properties, the clicks a host
// sends, and its registration with the panel's watcher.
#include <unistd.h>

#include "heat_item_parts.hpp"
#include "policy/constants.hpp"

namespace velmora {

namespace {

using Parts = HeatItem::Parts;

constexpr const char* watcherName = "org.kde.StatusNotifierWatcher";
constexpr const char* watcherPath = "/StatusNotifierWatcher";
constexpr const char* noHostLine = "ui: no tray host; the window is the only view";
// The widest label the item shows, so that the panel keeps its width as the digits change.
constexpr const char* labelGuide = "EXTREME HEAT · 100°";

constexpr const char* introspection = R"xml(<node>
  <interface name="org.kde.StatusNotifierItem">
    <property name="Category" type="s" access="read"/>
    <property name="Id" type="s" access="read"/>
    <property name="Title" type="s" access="read"/>
    <property name="Status" type="s" access="read"/>
    <property name="WindowId" type="i" access="read"/>
    <property name="IconName" type="s" access="read"/>
    <property name="IconThemePath" type="s" access="read"/>
    <property name="IconPixmap" type="a(iiay)" access="read"/>
    <property name="OverlayIconName" type="s" access="read"/>
    <property name="OverlayIconPixmap" type="a(iiay)" access="read"/>
    <property name="AttentionIconName" type="s" access="read"/>
    <property name="AttentionIconPixmap" type="a(iiay)" access="read"/>
    <property name="AttentionMovieName" type="s" access="read"/>
    <property name="ToolTip" type="(sa(iiay)ss)" access="read"/>
    <property name="ItemIsMenu" type="b" access="read"/>
    <property name="Menu" type="o" access="read"/>
    <property name="XAyatanaLabel" type="s" access="read"/>
    <property name="XAyatanaLabelGuide" type="s" access="read"/>
    <property name="XAyatanaOrderingIndex" type="u" access="read"/>
    <method name="ContextMenu"><arg name="x" type="i"/><arg name="y" type="i"/></method>
    <method name="Activate"><arg name="x" type="i"/><arg name="y" type="i"/></method>
    <method name="SecondaryActivate"><arg name="x" type="i"/><arg name="y" type="i"/></method>
    <method name="XAyatanaSecondaryActivate"><arg name="timestamp" type="u"/></method>
    <method name="Scroll"><arg name="delta" type="i"/><arg name="orientation" type="s"/></method>
    <signal name="NewTitle"/>
    <signal name="NewIcon"/>
    <signal name="NewAttentionIcon"/>
    <signal name="NewOverlayIcon"/>
    <signal name="NewToolTip"/>
    <signal name="NewStatus"><arg name="status" type="s"/></signal>
    <signal name="XAyatanaNewLabel"><arg name="label" type="s"/><arg name="guide" type="s"/></signal>
  </interface>
</node>)xml";

GVariant* emptyPixmaps() {
    return g_variant_new_array(G_VARIANT_TYPE("(iiay)"), nullptr, 0);
}

GVariant* figurePixmaps(const Parts& parts) {
    GVariantBuilder images;
    g_variant_builder_init(&images, G_VARIANT_TYPE("a(iiay)"));
    for (const int size : figureIconSizes) {
        const auto pixmap = drawFigureIcon(parts.digits(), parts.heatColor, size);
        GVariant* bytes = g_variant_new_fixed_array(G_VARIANT_TYPE_BYTE, pixmap.argb.data(),
                                                    pixmap.argb.size(), 1);
        g_variant_builder_add(&images, "(ii@ay)", pixmap.width, pixmap.height, bytes);
    }
    return g_variant_builder_end(&images);
}

GVariant* iconPixmaps(const Parts& parts) {
    // With the figure as text the icon is the themed one of the level, found by its name.
    if (parts.figureAsText) return emptyPixmaps();
    return figurePixmaps(parts);
}

GVariant* toolTip(const Parts& parts) {
    return g_variant_new("(s@a(iiay)ss)", "", emptyPixmaps(), parts.tooltipTitle.c_str(),
                         parts.tooltipText.c_str());
}

std::string themePathOf(const Parts& parts) {
    if (parts.icons && !parts.icons->path().empty()) return parts.icons->path().string();
    return parts.themePath.string();
}

GVariant* property(const Parts& parts, const gchar* name) {
    const std::string key(name);
    if (key == "Category") return g_variant_new_string("Hardware");
    if (key == "Id") return g_variant_new_string(std::string(bundleIdentifier).c_str());
    if (key == "Title") return g_variant_new_string(std::string(watchdog::appName).c_str());
    if (key == "Status") return g_variant_new_string(parts.status().c_str());
    if (key == "WindowId") return g_variant_new_int32(0);
    if (key == "IconName") return g_variant_new_string(parts.iconName().c_str());
    if (key == "IconThemePath") return g_variant_new_string(themePathOf(parts).c_str());
    if (key == "IconPixmap") return iconPixmaps(parts);
    if (key == "AttentionIconName") return g_variant_new_string(alarmIconName().c_str());
    if (key == "ToolTip") return toolTip(parts);
    if (key == "ItemIsMenu") return g_variant_new_boolean(FALSE);
    if (key == "Menu") return g_variant_new_object_path(menuPath);
    if (key == "XAyatanaLabel") return g_variant_new_string(parts.label().c_str());
    if (key == "XAyatanaLabelGuide") return g_variant_new_string(labelGuide);
    if (key == "XAyatanaOrderingIndex") return g_variant_new_uint32(0);
    if (key.ends_with("Pixmap")) return emptyPixmaps();
    return g_variant_new_string("");
}

GVariant* onGetProperty(GDBusConnection* /*bus*/, const gchar* /*sender*/, const gchar* /*path*/,
                        const gchar* /*interface*/, const gchar* name, GError** /*error*/,
                        gpointer data) {
    return property(*static_cast<const Parts*>(data), name);
}

void onMethod(GDBusConnection* /*bus*/, const gchar* /*sender*/, const gchar* /*path*/,
              const gchar* /*interface*/, const gchar* method, GVariant* /*parameters*/,
              GDBusMethodInvocation* invocation, gpointer data) {
    auto* parts = static_cast<Parts*>(data);
    g_dbus_method_invocation_return_value(invocation, nullptr);
    // A click on the item (left or middle) opens the live readings, as the first menu entry
    // does; the menu itself comes from the host.
    const std::string name(method);
    const bool opens =
        name == "Activate" || name == "SecondaryActivate" || name == "XAyatanaSecondaryActivate";
    if (opens && parts->actions.liveReadings) parts->actions.liveReadings();
}

void registerWithWatcher(Parts& parts) {
    if (!parts.nameOwned || !parts.watcherPresent) return;
    g_dbus_connection_call(parts.bus, watcherName, watcherPath, watcherName,
                           "RegisterStatusNotifierItem",
                           g_variant_new("(s)", parts.busName.c_str()), nullptr,
                           G_DBUS_CALL_FLAGS_NONE, -1, nullptr, nullptr, nullptr);
}

void onNameAcquired(GDBusConnection* /*bus*/, const gchar* /*name*/, gpointer data) {
    auto* parts = static_cast<Parts*>(data);
    parts->nameOwned = true;
    registerWithWatcher(*parts);
}

void onWatcherAppeared(GDBusConnection* /*bus*/, const gchar* /*name*/, const gchar* /*owner*/,
                       gpointer data) {
    auto* parts = static_cast<Parts*>(data);
    if (parts->hostSeen == false) parts->log("ui: tray host found; the heat item is shown");
    parts->hostSeen = true;
    parts->watcherPresent = true;
    registerWithWatcher(*parts);
}

void onWatcherVanished(GDBusConnection* /*bus*/, const gchar* /*name*/, gpointer data) {
    auto* parts = static_cast<Parts*>(data);
    if (parts->hostSeen != false) parts->log(noHostLine);
    parts->hostSeen = false;
    parts->watcherPresent = false;
}

}  // namespace

void startItemService(Parts& parts) {
    GError* error = nullptr;
    parts.bus = g_bus_get_sync(G_BUS_TYPE_SESSION, nullptr, &error);
    if (parts.bus == nullptr) {
        parts.log(std::string("ui: no session bus (") + error->message +
                  "); the window is the only view");
        g_error_free(error);
        return;
    }
    static const GDBusInterfaceVTable table{onMethod, onGetProperty, nullptr, {}};
    GDBusNodeInfo* node = g_dbus_node_info_new_for_xml(introspection, nullptr);
    parts.registration = g_dbus_connection_register_object(parts.bus, itemPath, node->interfaces[0],
                                                           &table, &parts, nullptr, nullptr);
    g_dbus_node_info_unref(node);
    parts.busName = "org.kde.StatusNotifierItem-" + std::to_string(getpid()) + "-1";
    parts.nameOwner =
        g_bus_own_name_on_connection(parts.bus, parts.busName.c_str(), G_BUS_NAME_OWNER_FLAGS_NONE,
                                     onNameAcquired, nullptr, &parts, nullptr);
    parts.watch =
        g_bus_watch_name_on_connection(parts.bus, watcherName, G_BUS_NAME_WATCHER_FLAGS_NONE,
                                       onWatcherAppeared, onWatcherVanished, &parts, nullptr);
}

void stopItemService(Parts& parts) {
    if (parts.bus == nullptr) return;
    if (parts.watch != 0) g_bus_unwatch_name(parts.watch);
    if (parts.nameOwner != 0) g_bus_unown_name(parts.nameOwner);
    if (parts.registration != 0) g_dbus_connection_unregister_object(parts.bus, parts.registration);
    g_object_unref(parts.bus);
    parts.bus = nullptr;
}

void emitItemSignal(const Parts& parts, const char* signal, GVariant* args) {
    if (parts.bus == nullptr) {
        if (args != nullptr) g_variant_unref(g_variant_ref_sink(args));
        return;
    }
    g_dbus_connection_emit_signal(parts.bus, nullptr, itemPath, itemInterface, signal, args,
                                  nullptr);
}

}  // namespace velmora
