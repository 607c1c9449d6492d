// A stand-in for a panel's StatusNotifierWatcher, for tests on a private session bus: it owns
// org.kde.StatusNotifierWatcher, accepts item and host registrations, lists the items in its
// properties, appends one line per registration to the file named by its argument, prints
// "ready" once it owns the name, and ends on SIGTERM or SIGINT.
#include <gio/gio.h>
#include <glib-unix.h>

#include <cstdio>
#include <map>
#include <string>
#include <vector>

namespace {

constexpr const char* introspection = R"(<node>
  <interface name="org.kde.StatusNotifierWatcher">
    <method name="RegisterStatusNotifierItem"><arg name="service" type="s" direction="in"/></method>
    <method name="RegisterStatusNotifierHost"><arg name="service" type="s" direction="in"/></method>
    <property name="RegisteredStatusNotifierItems" type="as" access="read"/>
    <property name="IsStatusNotifierHostRegistered" type="b" access="read"/>
    <property name="ProtocolVersion" type="i" access="read"/>
    <signal name="StatusNotifierItemRegistered"><arg type="s"/></signal>
    <signal name="StatusNotifierItemUnregistered"><arg type="s"/></signal>
    <signal name="StatusNotifierHostRegistered"/>
  </interface>
</node>)";

struct Watcher {
    GMainLoop* loop = nullptr;
    GDBusConnection* bus = nullptr;
    std::string recordFile;
    /// Registered items ("busname/path") and the name watch that drops each with its owner.
    std::map<std::string, guint> items;
};

void record(const Watcher& watcher, const std::string& line) {
    if (FILE* out = std::fopen(watcher.recordFile.c_str(), "a")) {
        std::fprintf(out, "%s\n", line.c_str());
        std::fclose(out);
    }
}

void emit(const Watcher& watcher, const char* signal, GVariant* args) {
    g_dbus_connection_emit_signal(watcher.bus, nullptr, "/StatusNotifierWatcher",
                                  "org.kde.StatusNotifierWatcher", signal, args, nullptr);
}

void onItemOwnerGone(GDBusConnection* /*bus*/, const gchar* owner, gpointer data) {
    auto* watcher = static_cast<Watcher*>(data);
    std::vector<std::string> gone;
    for (const auto& [item, watch] : watcher->items) {
        if (item.rfind(std::string(owner) + "/", 0) == 0) gone.push_back(item);
    }
    for (const auto& item : gone) {
        g_bus_unwatch_name(watcher->items[item]);
        watcher->items.erase(item);
        record(*watcher, "gone " + item);
        emit(*watcher, "StatusNotifierItemUnregistered", g_variant_new("(s)", item.c_str()));
    }
}

// An item may name itself by bus name or by object path; either way the watcher lists it as
// "busname/path", as the panels do.
std::string itemAddress(const std::string& service, const std::string& sender) {
    if (!service.empty() && service.front() == '/') return sender + service;
    return service + "/StatusNotifierItem";
}

void registerItem(Watcher& watcher, const std::string& service, const std::string& sender) {
    const auto item = itemAddress(service, sender);
    record(watcher, "item " + item);
    if (watcher.items.count(item) == 0) {
        const auto owner = item.substr(0, item.find('/'));
        watcher.items[item] = g_bus_watch_name_on_connection(watcher.bus, owner.c_str(),
                                                             G_BUS_NAME_WATCHER_FLAGS_NONE, nullptr,
                                                             onItemOwnerGone, &watcher, nullptr);
    }
    emit(watcher, "StatusNotifierItemRegistered", g_variant_new("(s)", item.c_str()));
}

void onMethod(GDBusConnection* /*bus*/, const gchar* sender, const gchar* /*path*/,
              const gchar* /*interface*/, const gchar* method, GVariant* parameters,
              GDBusMethodInvocation* invocation, gpointer data) {
    auto* watcher = static_cast<Watcher*>(data);
    const gchar* service = nullptr;
    g_variant_get(parameters, "(&s)", &service);
    if (g_strcmp0(method, "RegisterStatusNotifierItem") == 0) {
        registerItem(*watcher, service, sender);
    } else {
        record(*watcher, std::string("host ") + service);
        emit(*watcher, "StatusNotifierHostRegistered", nullptr);
    }
    g_dbus_method_invocation_return_value(invocation, nullptr);
}

GVariant* onGetProperty(GDBusConnection* /*bus*/, const gchar* /*sender*/, const gchar* /*path*/,
                        const gchar* /*interface*/, const gchar* name, GError** /*error*/,
                        gpointer data) {
    const auto* watcher = static_cast<const Watcher*>(data);
    if (g_strcmp0(name, "IsStatusNotifierHostRegistered") == 0) return g_variant_new_boolean(TRUE);
    if (g_strcmp0(name, "ProtocolVersion") == 0) return g_variant_new_int32(0);
    GVariantBuilder list;
    g_variant_builder_init(&list, G_VARIANT_TYPE("as"));
    for (const auto& [item, watch] : watcher->items) {
        g_variant_builder_add(&list, "s", item.c_str());
    }
    return g_variant_builder_end(&list);
}

void onBus(GDBusConnection* bus, const gchar* /*name*/, gpointer data) {
    auto* watcher = static_cast<Watcher*>(data);
    watcher->bus = bus;
    static const GDBusInterfaceVTable table{onMethod, onGetProperty, nullptr, {}};
    GDBusNodeInfo* node = g_dbus_node_info_new_for_xml(introspection, nullptr);
    g_dbus_connection_register_object(bus, "/StatusNotifierWatcher", node->interfaces[0], &table,
                                      watcher, nullptr, nullptr);
    g_dbus_node_info_unref(node);
}

void onNameAcquired(GDBusConnection* /*bus*/, const gchar* /*name*/, gpointer /*data*/) {
    std::printf("ready\n");
    std::fflush(stdout);
}

void onNameLost(GDBusConnection* /*bus*/, const gchar* /*name*/, gpointer data) {
    std::fprintf(stderr, "standin-watcher: could not own org.kde.StatusNotifierWatcher\n");
    g_main_loop_quit(static_cast<Watcher*>(data)->loop);
}

gboolean onSignal(gpointer data) {
    g_main_loop_quit(static_cast<Watcher*>(data)->loop);
    return G_SOURCE_REMOVE;
}

}  // namespace

int main(int argc, char** argv) {
    if (argc != 2) {
        std::fprintf(stderr, "usage: standin-watcher RECORD-FILE\n");
        return 2;
    }
    Watcher watcher;
    watcher.recordFile = argv[1];
    watcher.loop = g_main_loop_new(nullptr, FALSE);
    g_unix_signal_add(SIGTERM, onSignal, &watcher);
    g_unix_signal_add(SIGINT, onSignal, &watcher);
    const guint owner = g_bus_own_name(G_BUS_TYPE_SESSION, "org.kde.StatusNotifierWatcher",
                                       G_BUS_NAME_OWNER_FLAGS_DO_NOT_QUEUE, onBus, onNameAcquired,
                                       onNameLost, &watcher, nullptr);
    g_main_loop_run(watcher.loop);
    g_bus_unown_name(owner);
    g_main_loop_unref(watcher.loop);
    return 0;
}
