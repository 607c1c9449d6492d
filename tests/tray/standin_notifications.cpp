// A stand-in for a desktop's notification server, for tests on a private session bus: it owns
// org.freedesktop.Notifications, appends one JSON line per call to the file named by its first
// argument ({"call":"Notify","id":…,"replaces":…,"summary":…,"body":…,"actions":[…],
// "urgency":…,"suppressSound":…,"expire":…} or {"call":"Close","id":…}), and answers as real
// servers do: a new id unless one is replaced, NotificationClosed when one is closed. Tests
// drive the user's side through org.velmora.test.NotificationUser on the same object:
// InvokeAction(id, key) emits ActionInvoked then NotificationClosed (dismissed), Dismiss(id)
// emits NotificationClosed. "--slow MS" delays every answer; "--fail" answers every Notify with
// an error. Prints "ready" once it owns the name and ends on SIGTERM or SIGINT.
#include <gio/gio.h>
#include <glib-unix.h>

#include <cstdio>
#include <cstdlib>
#include <nlohmann/json.hpp>
#include <set>
#include <string>

namespace {

constexpr const char* introspection = R"xml(<node>
  <interface name="org.freedesktop.Notifications">
    <method name="Notify">
      <arg type="s" direction="in"/><arg type="u" direction="in"/><arg type="s" direction="in"/>
      <arg type="s" direction="in"/><arg type="s" direction="in"/><arg type="as" direction="in"/>
      <arg type="a{sv}" direction="in"/><arg type="i" direction="in"/>
      <arg type="u" direction="out"/>
    </method>
    <method name="CloseNotification"><arg type="u" direction="in"/></method>
    <method name="GetCapabilities"><arg type="as" direction="out"/></method>
    <method name="GetServerInformation">
      <arg type="s" direction="out"/><arg type="s" direction="out"/>
      <arg type="s" direction="out"/><arg type="s" direction="out"/>
    </method>
    <signal name="NotificationClosed"><arg type="u"/><arg type="u"/></signal>
    <signal name="ActionInvoked"><arg type="u"/><arg type="s"/></signal>
  </interface>
  <interface name="org.velmora.test.NotificationUser">
    <method name="InvokeAction"><arg type="u" direction="in"/><arg type="s" direction="in"/></method>
    <method name="Dismiss"><arg type="u" direction="in"/></method>
  </interface>
</node>)xml";

constexpr const char* path = "/org/freedesktop/Notifications";
constexpr const char* interface = "org.freedesktop.Notifications";

struct Server {
    GMainLoop* loop = nullptr;
    GDBusConnection* bus = nullptr;
    std::string recordFile;
    guint slowMs = 0;
    bool fail = false;
    guint32 lastId = 0;
    std::set<guint32> open;
};

void record(const Server& server, const nlohmann::json& line) {
    if (FILE* out = std::fopen(server.recordFile.c_str(), "a")) {
        std::fprintf(out, "%s\n", line.dump().c_str());
        std::fclose(out);
    }
}

void emitClosed(Server& server, guint32 id, guint32 reason) {
    if (server.open.erase(id) == 0) return;
    g_dbus_connection_emit_signal(server.bus, nullptr, path, interface, "NotificationClosed",
                                  g_variant_new("(uu)", id, reason), nullptr);
}

nlohmann::json notifyLine(GVariant* parameters) {
    const gchar* app = nullptr;
    guint32 replaces = 0;
    const gchar* icon = nullptr;
    const gchar* summary = nullptr;
    const gchar* body = nullptr;
    GVariant* actions = nullptr;
    GVariant* hints = nullptr;
    gint32 expire = 0;
    g_variant_get(parameters, "(&su&s&s&s@as@a{sv}i)", &app, &replaces, &icon, &summary, &body,
                  &actions, &hints, &expire);
    nlohmann::json line{{"call", "Notify"},     {"app", app},
                        {"replaces", replaces}, {"icon", icon},
                        {"summary", summary},   {"body", body},
                        {"expire", expire},     {"actions", nlohmann::json::array()}};
    gsize count = 0;
    const gchar** list = g_variant_get_strv(actions, &count);
    for (gsize i = 0; i < count; ++i)
        line["actions"].push_back(list[i]);
    g_free(static_cast<gpointer>(list));
    guchar urgency = 1;
    gboolean quiet = FALSE;
    if (g_variant_lookup(hints, "urgency", "y", &urgency)) line["urgency"] = urgency;
    line["suppressSound"] = g_variant_lookup(hints, "suppress-sound", "b", &quiet) && quiet;
    const gchar* entry = nullptr;
    if (g_variant_lookup(hints, "desktop-entry", "&s", &entry)) line["desktopEntry"] = entry;
    g_variant_unref(actions);
    g_variant_unref(hints);
    return line;
}

struct Reply {
    GDBusMethodInvocation* invocation;
    GVariant* value;  // null for an error
};

gboolean sendReply(gpointer data) {
    auto* reply = static_cast<Reply*>(data);
    if (reply->value == nullptr) {
        g_dbus_method_invocation_return_dbus_error(
            reply->invocation, "org.freedesktop.DBus.Error.Failed", "stand-in told to fail");
    } else {
        g_dbus_method_invocation_return_value(reply->invocation, reply->value);
    }
    delete reply;
    return G_SOURCE_REMOVE;
}

void answer(const Server& server, GDBusMethodInvocation* invocation, GVariant* value) {
    auto* reply = new Reply{invocation, value};
    if (server.slowMs == 0) {
        sendReply(reply);
    } else {
        g_timeout_add(server.slowMs, sendReply, reply);
    }
}

void onNotify(Server& server, GVariant* parameters, GDBusMethodInvocation* invocation) {
    auto line = notifyLine(parameters);
    if (server.fail) {
        line["failed"] = true;
        record(server, line);
        answer(server, invocation, nullptr);
        return;
    }
    const guint32 replaces = line["replaces"].get<guint32>();
    const guint32 id =
        replaces != 0 && server.open.count(replaces) > 0 ? replaces : ++server.lastId;
    server.open.insert(id);
    line["id"] = id;
    record(server, line);
    answer(server, invocation, g_variant_new("(u)", id));
}

void onMethod(GDBusConnection* /*bus*/, const gchar* /*sender*/, const gchar* /*path*/,
              const gchar* /*interface*/, const gchar* method, GVariant* parameters,
              GDBusMethodInvocation* invocation, gpointer data) {
    auto& server = *static_cast<Server*>(data);
    const std::string name(method);
    guint32 id = 0;
    if (name == "Notify") {
        onNotify(server, parameters, invocation);
        return;
    }
    if (name == "GetCapabilities") {
        const gchar* caps[] = {"actions", "body", "sound", nullptr};
        g_dbus_method_invocation_return_value(invocation, g_variant_new("(^as)", caps));
        return;
    }
    if (name == "GetServerInformation") {
        g_dbus_method_invocation_return_value(
            invocation, g_variant_new("(ssss)", "standin", "velmora tests", "1", "1.2"));
        return;
    }
    if (name == "InvokeAction") {
        const gchar* key = nullptr;
        g_variant_get(parameters, "(u&s)", &id, &key);
        record(server, {{"call", "InvokeAction"}, {"id", id}, {"key", key}});
        g_dbus_connection_emit_signal(server.bus, nullptr, path, interface, "ActionInvoked",
                                      g_variant_new("(us)", id, key), nullptr);
        emitClosed(server, id, 2);
    } else {
        g_variant_get(parameters, "(u)", &id);
        record(server, {{"call", name == "Dismiss" ? "Dismiss" : "Close"}, {"id", id}});
        emitClosed(server, id, name == "Dismiss" ? 2 : 3);
    }
    g_dbus_method_invocation_return_value(invocation, nullptr);
}

void onBus(GDBusConnection* bus, const gchar* /*name*/, gpointer data) {
    auto* server = static_cast<Server*>(data);
    server->bus = bus;
    static const GDBusInterfaceVTable table{onMethod, nullptr, nullptr, {}};
    GDBusNodeInfo* node = g_dbus_node_info_new_for_xml(introspection, nullptr);
    for (int i = 0; i < 2; ++i) {
        g_dbus_connection_register_object(bus, path, node->interfaces[i], &table, server, nullptr,
                                          nullptr);
    }
    g_dbus_node_info_unref(node);
}

void onNameAcquired(GDBusConnection* /*bus*/, const gchar* /*name*/, gpointer /*data*/) {
    std::printf("ready\n");
    std::fflush(stdout);
}

void onNameLost(GDBusConnection* /*bus*/, const gchar* /*name*/, gpointer data) {
    std::fprintf(stderr, "standin-notifications: could not own org.freedesktop.Notifications\n");
    g_main_loop_quit(static_cast<Server*>(data)->loop);
}

gboolean onSignal(gpointer data) {
    g_main_loop_quit(static_cast<Server*>(data)->loop);
    return G_SOURCE_REMOVE;
}

}  // namespace

int main(int argc, char** argv) {
    if (argc < 2) {
        std::fprintf(stderr, "usage: standin-notifications RECORD-FILE [--slow MS] [--fail]\n");
        return 2;
    }
    Server server;
    server.recordFile = argv[1];
    for (int i = 2; i < argc; ++i) {
        const std::string option(argv[i]);
        if (option == "--fail") server.fail = true;
        if (option == "--slow" && i + 1 < argc) {
            server.slowMs = static_cast<guint>(std::strtoul(argv[++i], nullptr, 10));
        }
    }
    server.loop = g_main_loop_new(nullptr, FALSE);
    g_unix_signal_add(SIGTERM, onSignal, &server);
    g_unix_signal_add(SIGINT, onSignal, &server);
    const guint owner = g_bus_own_name(G_BUS_TYPE_SESSION, "org.freedesktop.Notifications",
                                       G_BUS_NAME_OWNER_FLAGS_DO_NOT_QUEUE, onBus, onNameAcquired,
                                       onNameLost, &server, nullptr);
    g_main_loop_run(server.loop);
    g_bus_unown_name(owner);
    g_main_loop_unref(server.loop);
    return 0;
}
