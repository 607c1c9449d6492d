#include "tray/xfce_panel.hpp"

#include <gdk/gdk.h>
#include <gio/gio.h>
#include <signal.h>
#include <sys/wait.h>
#include <unistd.h>

#include <algorithm>
#include <chrono>
#include <cstdlib>
#include <cstring>
#include <fstream>
#include <thread>
#include <utility>
#include <vector>

namespace velmora::test {

namespace {

// One panel along the top of the screen holding only the status tray.
constexpr const char* panelChannel = R"xml(<?xml version="1.0" encoding="UTF-8"?>
<channel name="xfce4-panel" version="1.0">
  <property name="configver" type="int" value="2"/>
  <property name="panels" type="array">
    <value type="int" value="1"/>
    <property name="panel-1" type="empty">
      <property name="position" type="string" value="p=6;x=0;y=0"/>
      <property name="length" type="uint" value="12"/>
      <property name="position-locked" type="bool" value="true"/>
      <property name="size" type="uint" value="32"/>
      <property name="plugin-ids" type="array">
        <value type="int" value="1"/>
      </property>
    </property>
  </property>
  <property name="plugins" type="empty">
    <property name="plugin-1" type="string" value="systray">
      <property name="icon-size" type="int" value="24"/>
      <property name="square-icons" type="bool" value="false"/>
    </property>
  </property>
</channel>
)xml";

pid_t spawn(const char* program, const std::vector<std::string>& args,
            const std::vector<std::pair<std::string, std::string>>& env,
            const std::filesystem::path& log) {
    const pid_t pid = ::fork();
    if (pid != 0) return pid;
    for (const auto& [name, value] : env)
        ::setenv(name.c_str(), value.c_str(), 1);
    if (FILE* out = std::fopen(log.c_str(), "a")) {
        ::dup2(::fileno(out), STDOUT_FILENO);
        ::dup2(::fileno(out), STDERR_FILENO);
    }
    std::vector<char*> argv{const_cast<char*>(program)};
    for (const auto& arg : args)
        argv.push_back(const_cast<char*>(arg.c_str()));
    argv.push_back(nullptr);
    ::execv(program, argv.data());
    ::_exit(127);
}

void stop(pid_t& pid) {
    if (pid <= 0) return;
    ::kill(pid, SIGTERM);
    int status = 0;
    ::waitpid(pid, &status, 0);
    pid = -1;
}

bool nameOwned(const char* name) {
    GDBusConnection* bus = g_bus_get_sync(G_BUS_TYPE_SESSION, nullptr, nullptr);
    if (bus == nullptr) return false;
    GVariant* reply = g_dbus_connection_call_sync(
        bus, "org.freedesktop.DBus", "/org/freedesktop/DBus", "org.freedesktop.DBus",
        "NameHasOwner", g_variant_new("(s)", name), G_VARIANT_TYPE("(b)"), G_DBUS_CALL_FLAGS_NONE,
        2000, nullptr, nullptr);
    g_object_unref(bus);
    if (reply == nullptr) return false;
    gboolean owned = FALSE;
    g_variant_get(reply, "(b)", &owned);
    g_variant_unref(reply);
    return owned != FALSE;
}

/// Waits for a program to take its bus name; the programs start in their own time.
bool waitForName(const char* name, pid_t pid) {
    for (int i = 0; i < 200; ++i) {
        if (nameOwned(name)) return true;
        int status = 0;
        if (::waitpid(pid, &status, WNOHANG) == pid) return false;
        std::this_thread::sleep_for(std::chrono::milliseconds(50));
    }
    return false;
}

}  // namespace

XfcePanel::XfcePanel(const std::filesystem::path& home, bool dark) {
    if (!std::filesystem::exists(VELMORA_XFCE4_PANEL) ||
        !std::filesystem::exists(VELMORA_XFCONFD)) {
        problem_ = "xfce4-panel is not installed (scripts/install-deps installs it)";
        return;
    }
    const auto config = home / "config";
    const auto channels = config / "xfce4/xfconf/xfce-perchannel-xml";
    std::filesystem::create_directories(channels);
    std::ofstream(channels / "xfce4-panel.xml", std::ios::trunc) << panelChannel;
    const std::vector<std::pair<std::string, std::string>> env{
        {"HOME", home.string()},
        {"XDG_CONFIG_HOME", config.string()},
        {"XDG_CACHE_HOME", (home / "cache").string()},
        {"XDG_DATA_HOME", (home / "data").string()},
        {"GTK_THEME", dark ? "Adwaita:dark" : "Adwaita"}};
    // Its own configuration daemon: one the bus would start would read the real user's.
    xfconfd_ = spawn(VELMORA_XFCONFD, {}, env, home / "xfconfd.log");
    if (!waitForName("org.xfce.Xfconf", xfconfd_)) {
        problem_ = "xfconfd did not start; see " + (home / "xfconfd.log").string();
        return;
    }
    panel_ = spawn(VELMORA_XFCE4_PANEL, {"--disable-wm-check"}, env, home / "panel.log");
    if (!waitForName("org.kde.StatusNotifierWatcher", panel_)) {
        problem_ = "the panel's status tray did not start; see " + (home / "panel.log").string();
        return;
    }
    started_ = true;
}

XfcePanel::~XfcePanel() {
    stop(panel_);
    stop(xfconfd_);
}

GdkPixbuf* XfcePanel::picture() {
    GdkWindow* root = gdk_get_default_root_window();
    const int width = gdk_window_get_width(root);
    // The panel runs along the top; the application's window is centred, well below it.
    const int height = std::min(gdk_window_get_height(root), 64);
    GdkPixbuf* screen = gdk_pixbuf_get_from_window(root, 0, 0, width, height);
    if (screen == nullptr) return nullptr;
    const int stride = gdk_pixbuf_get_rowstride(screen);
    const int channels = gdk_pixbuf_get_n_channels(screen);
    const guchar* pixels = gdk_pixbuf_get_pixels(screen);
    const guchar* bare = pixels + (height - 1) * stride + (width - 1) * channels;
    int left = width;
    int top = height;
    int right = -1;
    int bottom = -1;
    for (int y = 0; y < height; ++y) {
        for (int x = 0; x < width; ++x) {
            const guchar* p = pixels + y * stride + x * channels;
            if (std::memcmp(p, bare, 3) == 0) continue;
            left = std::min(left, x);
            right = std::max(right, x);
            top = std::min(top, y);
            bottom = std::max(bottom, y);
        }
    }
    GdkPixbuf* panel = nullptr;
    if (right >= left && bottom >= top) {
        panel = gdk_pixbuf_new_subpixbuf(screen, left, top, right - left + 1, bottom - top + 1);
        GdkPixbuf* copy = gdk_pixbuf_copy(panel);
        g_object_unref(panel);
        panel = copy;
    }
    g_object_unref(screen);
    return panel;
}

bool hasColour(GdkPixbuf* picture, int red, int green, int blue, int count, int tolerance) {
    if (picture == nullptr) return false;
    const int stride = gdk_pixbuf_get_rowstride(picture);
    const int channels = gdk_pixbuf_get_n_channels(picture);
    const guchar* pixels = gdk_pixbuf_get_pixels(picture);
    int found = 0;
    for (int y = 0; y < gdk_pixbuf_get_height(picture); ++y) {
        for (int x = 0; x < gdk_pixbuf_get_width(picture); ++x) {
            const guchar* p = pixels + y * stride + x * channels;
            if (std::abs(p[0] - red) <= tolerance && std::abs(p[1] - green) <= tolerance &&
                std::abs(p[2] - blue) <= tolerance) {
                ++found;
            }
        }
    }
    return found >= count;
}

bool samePixels(GdkPixbuf* a, GdkPixbuf* b) {
    if (a == nullptr || b == nullptr) return a == b;
    if (gdk_pixbuf_get_width(a) != gdk_pixbuf_get_width(b) ||
        gdk_pixbuf_get_height(a) != gdk_pixbuf_get_height(b) ||
        gdk_pixbuf_get_rowstride(a) != gdk_pixbuf_get_rowstride(b)) {
        return false;
    }
    const auto size = static_cast<std::size_t>(gdk_pixbuf_get_rowstride(a)) *
                      static_cast<std::size_t>(gdk_pixbuf_get_height(a));
    return std::memcmp(gdk_pixbuf_get_pixels(a), gdk_pixbuf_get_pixels(b), size) == 0;
}

}  // namespace velmora::test
