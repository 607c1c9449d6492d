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
    // The panel runs along the top from the left corner.
    const int height = std::min(gdk_window_get_height(root), 64);
    GdkPixbuf* screen = gdk_pixbuf_get_from_window(root, 0, 0, width, height);
    if (screen == nullptr) return nullptr;
    const int stride = gdk_pixbuf_get_rowstride(screen);
    const int channels = gdk_pixbuf_get_n_channels(screen);
    const guchar* pixels = gdk_pixbuf_get_pixels(screen);
    const guchar* bare = pixels + (height - 1) * stride + (width - 1) * channels;
    const auto isBare = [&](int x, int y) {
        return std::memcmp(pixels + y * stride + x * channels, bare, 3) == 0;
    };
    // It ends at the first column, and the first row, of bare background: windows elsewhere
    // on the screen are left out.
    int right = 0;
    while (right < width && !isBare(right, 0))
        ++right;
    int bottom = 0;
    while (bottom < height && !isBare(0, bottom))
        ++bottom;
    GdkPixbuf* panel = nullptr;
    if (right > 0 && bottom > 0) {
        GdkPixbuf* part = gdk_pixbuf_new_subpixbuf(screen, 0, 0, right, bottom);
        panel = gdk_pixbuf_copy(part);
        g_object_unref(part);
    }
    g_object_unref(screen);
    return panel;
}

namespace {

bool matchesAt(GdkPixbuf* picture, const FigurePixmap& image, int left, int top) {
    const int stride = gdk_pixbuf_get_rowstride(picture);
    const int channels = gdk_pixbuf_get_n_channels(picture);
    const guchar* pixels = gdk_pixbuf_get_pixels(picture);
    for (int y = 0; y < image.height; ++y) {
        for (int x = 0; x < image.width; ++x) {
            const auto* argb = &image.argb[static_cast<std::size_t>(y * image.width + x) * 4];
            if (argb[0] != 255) continue;  // edges blend with the panel
            const guchar* p = pixels + (top + y) * stride + (left + x) * channels;
            for (int part = 0; part < 3; ++part) {
                if (std::abs(p[part] - argb[part + 1]) > 2) return false;
            }
        }
    }
    return true;
}

}  // namespace

bool containsImage(GdkPixbuf* picture, const FigurePixmap& image) {
    if (picture == nullptr) return false;
    for (int top = 0; top + image.height <= gdk_pixbuf_get_height(picture); ++top) {
        for (int left = 0; left + image.width <= gdk_pixbuf_get_width(picture); ++left) {
            if (matchesAt(picture, image, left, top)) return true;
        }
    }
    return false;
}

}  // namespace velmora::test
