#include "app/linux/desktop_notifier.hpp"

#include <gio/gio.h>

#include <array>
#include <cstdlib>
#include <filesystem>
#include <map>
#include <nlohmann/json.hpp>

#include "app/core/appearance.hpp"
#include "metrics/heat_cause.hpp"
#include "policy/constants.hpp"

namespace velmora {

namespace {

constexpr const char* serverName = "org.freedesktop.Notifications";
constexpr const char* serverPath = "/org/freedesktop/Notifications";
constexpr const char* serverInterface = "org.freedesktop.Notifications";
constexpr const char* cancelKey = "cancel";
constexpr const char* cancelLabel = "Keep working \u00b7 Cancel";
constexpr int callTimeoutMs = 5000;
/// NotificationClosed's reason when the user dismissed it.
constexpr guint32 dismissedByUser = 2;

/// A session bus is there to try: an address, or the per-user bus socket.
bool sessionBusExpected() {
    // Read once per run, from the loop's thread, before any notification.
    const char* address = std::getenv("DBUS_SESSION_BUS_ADDRESS");  // NOLINT(concurrency-mt-unsafe)
    if (address != nullptr && *address != '\0') {
        return true;
    }
    const char* runtime = std::getenv("XDG_RUNTIME_DIR");  // NOLINT(concurrency-mt-unsafe)
    std::error_code error;
    return runtime != nullptr && *runtime != '\0' &&
           std::filesystem::exists(std::filesystem::path(runtime) / "bus", error);
}

}  // namespace

/// What the asynchronous calls share; they hold it weakly, so that one finishing after the
/// notifier is gone does nothing.
struct DesktopNotifier::State {
    /// One desktop notification per kind: the server's id, and the command waiting for the
    /// answer to the one in flight (only the latest is worth sending).
    struct Slot {
        guint32 id = 0;
        bool inFlight = false;
        std::optional<NoticeCommand> waiting;
        /// The user closed the countdown's notification: its updates stay away.
        bool dismissed = false;
    };

    Hooks hooks;
    GDBusConnection* bus = nullptr;
    bool connecting = false;
    bool unavailable = false;
    bool failureLogged = false;
    std::map<NoticeKind, Slot> slots;
    guint actionSignal = 0;
    guint closedSignal = 0;

    void log(const std::string& line) const {
        if (hooks.log) hooks.log(line);
    }
    void logFailureOnce(const std::string& what) {
        if (failureLogged) return;
        failureLogged = true;
        log("notify: " + what + "; later failures are not logged");
    }
};

namespace {

using State = DesktopNotifier::State;

/// The weak handle a call's callback is given, freed by the callback.
std::weak_ptr<State>* handleOf(const std::shared_ptr<State>& state) {
    return new std::weak_ptr<State>(state);
}

std::shared_ptr<State> takeHandle(gpointer data) {
    auto* handle = static_cast<std::weak_ptr<State>*>(data);
    auto state = handle->lock();
    delete handle;
    return state;
}

void send(const std::shared_ptr<State>& state, NoticeKind kind);

GVariant* hintsOf(const Notice& notice) {
    GVariantBuilder hints;
    g_variant_builder_init(&hints, G_VARIANT_TYPE("a{sv}"));
    g_variant_builder_add(&hints, "{sv}", "urgency", g_variant_new_byte(notice.critical ? 2 : 1));
    g_variant_builder_add(&hints, "{sv}", "desktop-entry",
                          g_variant_new_string(std::string(bundleIdentifier).c_str()));
    g_variant_builder_add(&hints, "{sv}", "category", g_variant_new_string("device"));
    if (notice.quiet) {
        g_variant_builder_add(&hints, "{sv}", "suppress-sound", g_variant_new_boolean(TRUE));
    }
    return g_variant_builder_end(&hints);
}

GVariant* notifyArgs(const Notice& notice, guint32 replaces) {
    GVariantBuilder actions;
    g_variant_builder_init(&actions, G_VARIANT_TYPE("as"));
    if (notice.cancelAction) {
        g_variant_builder_add(&actions, "s", cancelKey);
        g_variant_builder_add(&actions, "s", cancelLabel);
    }
    const std::string app(watchdog::appName);
    const std::string icon(bundleIdentifier);
    // The countdown must stay until it ends; the others go when the server decides.
    const gint32 expire = notice.critical ? 0 : -1;
    return g_variant_new("(susss@as@a{sv}i)", app.c_str(), replaces, icon.c_str(),
                         notice.summary.c_str(), notice.body.c_str(),
                         g_variant_builder_end(&actions), hintsOf(notice), expire);
}

struct CallData {
    std::weak_ptr<State>* handle;
    NoticeKind kind;
};

void onNotified(GObject* source, GAsyncResult* result, gpointer data) {
    auto* call = static_cast<CallData*>(data);
    const NoticeKind kind = call->kind;
    const auto state = takeHandle(call->handle);
    delete call;
    GError* error = nullptr;
    GVariant* reply = g_dbus_connection_call_finish(G_DBUS_CONNECTION(source), result, &error);
    if (!state) {
        if (reply != nullptr) g_variant_unref(reply);
        if (error != nullptr) g_error_free(error);
        return;
    }
    auto& slot = state->slots[kind];
    slot.inFlight = false;
    if (reply != nullptr) {
        g_variant_get(reply, "(u)", &slot.id);
        g_variant_unref(reply);
    } else {
        state->logFailureOnce(std::string("the notification service did not show one: ") +
                              (error != nullptr ? error->message : "no answer"));
        g_error_free(error);
    }
    if (slot.waiting) send(state, kind);
}

void onClosedCall(GObject* source, GAsyncResult* result, gpointer data) {
    const auto state = takeHandle(data);
    GError* error = nullptr;
    GVariant* reply = g_dbus_connection_call_finish(G_DBUS_CONNECTION(source), result, &error);
    if (reply != nullptr) g_variant_unref(reply);
    if (error != nullptr) {
        if (state) state->logFailureOnce(std::string("could not close one: ") + error->message);
        g_error_free(error);
    }
}

void send(const std::shared_ptr<State>& state, NoticeKind kind) {
    auto& slot = state->slots[kind];
    if (slot.inFlight || !slot.waiting) return;
    const NoticeCommand command = *slot.waiting;
    slot.waiting.reset();
    if (command.op == NoticeCommand::Op::close) {
        if (slot.id == 0) return;
        g_dbus_connection_call(state->bus, serverName, serverPath, serverInterface,
                               "CloseNotification", g_variant_new("(u)", slot.id), nullptr,
                               G_DBUS_CALL_FLAGS_NONE, callTimeoutMs, nullptr, onClosedCall,
                               handleOf(state));
        slot.id = 0;
        return;
    }
    slot.inFlight = true;
    g_dbus_connection_call(state->bus, serverName, serverPath, serverInterface, "Notify",
                           notifyArgs(command.notice, slot.id), G_VARIANT_TYPE("(u)"),
                           G_DBUS_CALL_FLAGS_NONE, callTimeoutMs, nullptr, onNotified,
                           new CallData{handleOf(state), kind});
}

void onServerSignal(GDBusConnection* /*bus*/, const gchar* /*sender*/, const gchar* /*path*/,
                    const gchar* /*interface*/, const gchar* signal, GVariant* parameters,
                    gpointer data) {
    const auto state = static_cast<std::weak_ptr<State>*>(data)->lock();
    if (!state) return;
    guint32 id = 0;
    if (g_strcmp0(signal, "ActionInvoked") == 0) {
        const gchar* key = nullptr;
        g_variant_get(parameters, "(u&s)", &id, &key);
        const auto& countdown = state->slots[NoticeKind::countdown];
        if (id != 0 && id == countdown.id && g_strcmp0(key, cancelKey) == 0) {
            state->log("notify: \"Keep working\" chosen in the countdown's notification");
            if (state->hooks.cancelCountdown) state->hooks.cancelCountdown();
        }
        return;
    }
    guint32 reason = 0;
    g_variant_get(parameters, "(uu)", &id, &reason);
    for (auto& [kind, slot] : state->slots) {
        if (id == 0 || slot.id != id) continue;
        slot.id = 0;
        if (kind == NoticeKind::countdown && reason == dismissedByUser) slot.dismissed = true;
    }
}

void deleteHandle(gpointer data) {
    delete static_cast<std::weak_ptr<State>*>(data);
}

void subscribe(const std::shared_ptr<State>& state) {
    for (const char* signal : {"ActionInvoked", "NotificationClosed"}) {
        const guint id = g_dbus_connection_signal_subscribe(
            state->bus, nullptr, serverInterface, signal, serverPath, nullptr,
            G_DBUS_SIGNAL_FLAGS_NONE, onServerSignal, handleOf(state), deleteHandle);
        (g_strcmp0(signal, "ActionInvoked") == 0 ? state->actionSignal : state->closedSignal) = id;
    }
}

void queue(const std::shared_ptr<State>& state, const NoticeCommand& command) {
    auto& slot = state->slots[command.notice.kind];
    if (command.notice.kind == NoticeKind::countdown) {
        // A new countdown (one that may sound) comes back after a dismissed one.
        if (command.op == NoticeCommand::Op::show && !command.notice.quiet) slot.dismissed = false;
        if (slot.dismissed && command.op == NoticeCommand::Op::show) return;
    }
    slot.waiting = command;
    send(state, command.notice.kind);
}

void onBus(GObject* /*source*/, GAsyncResult* result, gpointer data) {
    const auto state = takeHandle(data);
    GError* error = nullptr;
    GDBusConnection* bus = g_bus_get_finish(result, &error);
    if (!state) {
        if (bus != nullptr) g_object_unref(bus);
        if (error != nullptr) g_error_free(error);
        return;
    }
    state->connecting = false;
    if (bus == nullptr) {
        state->unavailable = true;
        state->log(std::string("notify: no session bus (") + error->message +
                   "); no desktop notifications");
        g_error_free(error);
        return;
    }
    state->bus = bus;
    subscribe(state);
    // Whatever came while connecting: the latest of each kind.
    for (auto& [kind, slot] : state->slots) {
        if (slot.waiting) send(state, kind);
    }
}

}  // namespace

DesktopNotifier::DesktopNotifier() : state_(std::make_shared<State>()) {}

DesktopNotifier::~DesktopNotifier() {
    if (state_->bus == nullptr) return;
    if (state_->actionSignal != 0)
        g_dbus_connection_signal_unsubscribe(state_->bus, state_->actionSignal);
    if (state_->closedSignal != 0)
        g_dbus_connection_signal_unsubscribe(state_->bus, state_->closedSignal);
    g_object_unref(state_->bus);
}

void DesktopNotifier::connect(Hooks hooks) {
    if (hooks.log) state_->hooks.log = std::move(hooks.log);
    if (hooks.cancelCountdown) state_->hooks.cancelCountdown = std::move(hooks.cancelCountdown);
    if (hooks.risesWanted) state_->hooks.risesWanted = std::move(hooks.risesWanted);
}

void DesktopNotifier::sampled(const LiveInputs& inputs, Timestamp /*now*/) {
    celsius_.reset();
    if (inputs.cpuTemp) celsius_ = inputs.cpuTemp->celsius;
    busiest_.reset();
    if (inputs.heatCause) busiest_ = topProcessPhrase(*inputs.heatCause);
}

void DesktopNotifier::ticked(const nlohmann::json& view) {
    if (state_->unavailable) return;
    const auto risesWanted = [this] {
        return !state_->hooks.risesWanted || state_->hooks.risesWanted();
    };
    const auto facts = noticeFactsFromView(view, celsius_, busiest_);
    const auto commands = rules_.update(facts, MonoTime::now(), risesWanted);
    if (commands.empty()) return;
    if (state_->bus == nullptr && !state_->connecting) {
        if (!sessionBusExpected()) {
            state_->unavailable = true;
            state_->log("notify: no session bus; no desktop notifications");
            return;
        }
        state_->connecting = true;
        g_bus_get(G_BUS_TYPE_SESSION, nullptr, onBus, handleOf(state_));
    }
    for (const auto& command : commands) {
        if (state_->bus != nullptr) {
            queue(state_, command);
        } else {
            auto& slot = state_->slots[command.notice.kind];
            slot.waiting = command;
        }
    }
}

}  // namespace velmora
