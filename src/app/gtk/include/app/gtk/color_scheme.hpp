#pragma once

#include <gio/gio.h>

#include <functional>
#include <optional>

namespace velmora {

/// The desktop's light/dark wish: the freedesktop appearance setting through the settings
/// portal where one answers, else the GTK theme the desktop chose. `changed` is called with
/// the new answer whenever it changes, on the main loop.
class ColorSchemeWatch {
  public:
    explicit ColorSchemeWatch(std::function<void(bool dark)> changed);
    ~ColorSchemeWatch();
    ColorSchemeWatch(const ColorSchemeWatch&) = delete;
    ColorSchemeWatch& operator=(const ColorSchemeWatch&) = delete;
    ColorSchemeWatch(ColorSchemeWatch&&) = delete;
    ColorSchemeWatch& operator=(ColorSchemeWatch&&) = delete;

    /// Dark or not, as far as is known now.
    bool prefersDark() const;

  private:
    static void onRead(GObject* source, GAsyncResult* result, gpointer self);
    static void onSettingChanged(GDBusConnection* connection, const gchar* sender,
                                 const gchar* path, const gchar* interface, const gchar* signal,
                                 GVariant* parameters, gpointer self);
    static void onThemeChanged(GObject* settings, GParamSpec* property, gpointer self);
    void takePortalValue(GVariant* value);
    bool themeIsDark() const;
    void report();

    std::function<void(bool)> changed_;
    GDBusConnection* bus_ = nullptr;
    GCancellable* cancellable_;
    unsigned subscription_ = 0;
    gulong themeHandler_ = 0;
    /// The portal's answer: absent when no portal answered or it has no preference.
    std::optional<bool> portalDark_;
    bool lastReported_ = false;
};

}  // namespace velmora
