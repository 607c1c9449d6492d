#pragma once

#include <gtk/gtk.h>

#include <filesystem>
#include <functional>
#include <memory>

#include "app/core/geometry.hpp"
#include "app/gtk/page_view.hpp"
#include "policy/sinks.hpp"

namespace velmora {

/// The live-readings popup of the tray item: a small undecorated window kept above the others
/// and out of the task bar, holding the menu web view (only the "theme" handler). It opens
/// in the work area's corner nearest the pointer, where the panel is, and closes on Escape
/// or when it loses the focus.
class TrayPopup {
  public:
    TrayPopup(Size size, const std::filesystem::path& pages, LogSink log,
              PageView::Callbacks callbacks);
    ~TrayPopup();
    TrayPopup(const TrayPopup&) = delete;
    TrayPopup& operator=(const TrayPopup&) = delete;
    TrayPopup(TrayPopup&&) = delete;
    TrayPopup& operator=(TrayPopup&&) = delete;

    PageView& view() { return *view_; }
    GtkWindow* window() const { return window_; }

    void show();
    void close();
    bool shown() const;

  private:
    static gboolean onKey(GtkWidget* widget, GdkEventKey* event, gpointer self);
    static gboolean onFocusOut(GtkWidget* widget, GdkEventFocus* event, gpointer self);
    static gboolean onDelete(GtkWidget* widget, GdkEvent* event, gpointer self);
    void placeNearPointer();

    Size size_;
    GtkWindow* window_;
    std::unique_ptr<PageView> view_;
};

}  // namespace velmora
