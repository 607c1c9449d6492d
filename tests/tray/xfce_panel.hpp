#pragma once

#include <gdk-pixbuf/gdk-pixbuf.h>
#include <sys/types.h>

#include <filesystem>
#include <optional>
#include <string>

namespace velmora::test {

/// A real panel for the tests: Debian's xfce4-panel with only its status tray (which is both
/// a StatusNotifierWatcher and a host), on the test's private bus and display. It needs no
/// desktop session: it gets its own xfconf daemon reading a private configuration, and a
/// GTK theme, light or dark, of its own.
class XfcePanel {
  public:
    /// Starts it with its files under `home`; `started()` says whether its tray came up.
    XfcePanel(const std::filesystem::path& home, bool dark);
    ~XfcePanel();
    XfcePanel(const XfcePanel&) = delete;
    XfcePanel& operator=(const XfcePanel&) = delete;
    XfcePanel(XfcePanel&&) = delete;
    XfcePanel& operator=(XfcePanel&&) = delete;

    bool started() const { return started_; }
    /// Why it did not start.
    const std::string& problem() const { return problem_; }

    /// The panel as it is on the screen now: the part of the screen's top strip that is not
    /// the display's bare background. Unreferenced by the caller; null when nothing is drawn.
    static GdkPixbuf* picture();

  private:
    pid_t xfconfd_ = -1;
    pid_t panel_ = -1;
    bool started_ = false;
    std::string problem_;
};

/// Whether `picture` holds at least `count` pixels within `tolerance` of the colour.
bool hasColour(GdkPixbuf* picture, int red, int green, int blue, int count = 12, int tolerance = 8);
bool samePixels(GdkPixbuf* a, GdkPixbuf* b);

}  // namespace velmora::test
