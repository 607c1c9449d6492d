#include "app/gtk/color_scheme.hpp"

#include <gtk/gtk.h>

#include <string>

namespace velmora {

namespace {

constexpr const char* portalName = "org.freedesktop.portal.Desktop";
constexpr const char* portalPath = "/org/freedesktop/portal/desktop";
constexpr const char* settingsInterface = "org.freedesktop.portal.Settings";
constexpr const char* appearanceNamespace = "org.freedesktop.appearance";
constexpr const char* colorSchemeKey = "color-scheme";

/// The portal's value is a variant, sometimes wrapped twice (older Read answers).
GVariant* unwrap(GVariant* value) {
    GVariant* current = g_variant_ref(value);
    while (g_variant_is_of_type(current, G_VARIANT_TYPE_VARIANT)) {
        GVariant* inner = g_variant_get_variant(current);
        g_variant_unref(current);
        current = inner;
    }
    return current;
}

}  // namespace

ColorSchemeWatch::ColorSchemeWatch(std::function<void(bool dark)> changed)
    : changed_(std::move(changed)), cancellable_(g_cancellable_new()) {
    lastReported_ = themeIsDark();
    if (auto* settings = gtk_settings_get_default()) {
        themeHandler_ =
            g_signal_connect(settings, "notify::gtk-theme-name", G_CALLBACK(onThemeChanged), this);
    }
    bus_ = g_bus_get_sync(G_BUS_TYPE_SESSION, nullptr, nullptr);
    if (bus_ == nullptr) return;
    subscription_ = g_dbus_connection_signal_subscribe(
        bus_, portalName, settingsInterface, "SettingChanged", portalPath, appearanceNamespace,
        G_DBUS_SIGNAL_FLAGS_NONE, onSettingChanged, this, nullptr);
    // No auto-start: a desktop without a portal answers at once with an error.
    g_dbus_connection_call(bus_, portalName, portalPath, settingsInterface, "Read",
                           g_variant_new("(ss)", appearanceNamespace, colorSchemeKey), nullptr,
                           G_DBUS_CALL_FLAGS_NO_AUTO_START, 2000, cancellable_, onRead, this);
}

ColorSchemeWatch::~ColorSchemeWatch() {
    g_cancellable_cancel(cancellable_);
    g_object_unref(cancellable_);
    if (themeHandler_ != 0) g_signal_handler_disconnect(gtk_settings_get_default(), themeHandler_);
    if (bus_ != nullptr) {
        if (subscription_ != 0) g_dbus_connection_signal_unsubscribe(bus_, subscription_);
        g_object_unref(bus_);
    }
}

bool ColorSchemeWatch::prefersDark() const {
    return portalDark_ ? *portalDark_ : themeIsDark();
}

bool ColorSchemeWatch::themeIsDark() const {
    auto* settings = gtk_settings_get_default();
    if (settings == nullptr) return false;
    gchar* name = nullptr;
    g_object_get(settings, "gtk-theme-name", &name, nullptr);
    const std::string theme = name != nullptr ? name : "";
    g_free(name);
    return theme.size() >= 5 && g_ascii_strcasecmp(theme.c_str() + theme.size() - 5, "-dark") == 0;
}

void ColorSchemeWatch::onRead(GObject* source, GAsyncResult* result, gpointer data) {
    GError* error = nullptr;
    GVariant* reply = g_dbus_connection_call_finish(G_DBUS_CONNECTION(source), result, &error);
    if (reply == nullptr) {
        // Cancelled at quit, or no portal: the GTK theme decides.
        g_error_free(error);
        return;
    }
    auto* self = static_cast<ColorSchemeWatch*>(data);
    GVariant* value = g_variant_get_child_value(reply, 0);
    self->takePortalValue(value);
    g_variant_unref(value);
    g_variant_unref(reply);
}

void ColorSchemeWatch::onSettingChanged(GDBusConnection* /*connection*/, const gchar* /*sender*/,
                                        const gchar* /*path*/, const gchar* /*interface*/,
                                        const gchar* /*signal*/, GVariant* parameters,
                                        gpointer data) {
    if (!g_variant_is_of_type(parameters, G_VARIANT_TYPE("(ssv)"))) return;
    const gchar* space = nullptr;
    const gchar* key = nullptr;
    GVariant* value = nullptr;
    g_variant_get(parameters, "(&s&sv)", &space, &key, &value);
    if (g_strcmp0(space, appearanceNamespace) == 0 && g_strcmp0(key, colorSchemeKey) == 0) {
        static_cast<ColorSchemeWatch*>(data)->takePortalValue(value);
    }
    g_variant_unref(value);
}

void ColorSchemeWatch::takePortalValue(GVariant* value) {
    GVariant* scheme = unwrap(value);
    // 1 prefers dark, 2 prefers light, 0 no preference (then the theme decides).
    portalDark_.reset();
    if (g_variant_is_of_type(scheme, G_VARIANT_TYPE_UINT32)) {
        const auto answer = g_variant_get_uint32(scheme);
        if (answer == 1 || answer == 2) portalDark_ = answer == 1;
    }
    g_variant_unref(scheme);
    report();
}

void ColorSchemeWatch::onThemeChanged(GObject* /*settings*/, GParamSpec* /*property*/,
                                      gpointer data) {
    static_cast<ColorSchemeWatch*>(data)->report();
}

void ColorSchemeWatch::report() {
    const bool dark = prefersDark();
    if (dark == lastReported_) return;
    lastReported_ = dark;
    if (changed_) changed_(dark);
}

}  // namespace velmora
