#pragma once

#include <gdk-pixbuf/gdk-pixbuf.h>
#include <sys/types.h>

#include <filesystem>
#include <optional>
#include <string>

#include "app/tray/figure_icon.hpp"

#include "app/tray/figure_icon.hpp"

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

    /// The panel as it is on the screen now: the rectangle from the screen's top left corner
    /// up to the display's bare background. Unreferenced by the caller; null when nothing is drawn.
    static GdkPixbuf* picture();

  private:
    pid_t xfconfd_ = -1;
    pid_t panel_ = -1;
    bool started_ = false;
    std::string problem_;
};

/// Whether every opaque pixel of `image` is in `picture` at one place, as drawn unscaled.
bool containsImage(GdkPixbuf* picture, const FigurePixmap& image);

}  // namespace velmora::test
