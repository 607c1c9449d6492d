#pragma once

#include <gtk/gtk.h>

#include <filesystem>
#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <utility>

#include "app/core/geometry.hpp"
#include "app/gtk/page_view.hpp"
#include "policy/sinks.hpp"

namespace velmora {

/// The live-readings popup of the tray item: a small undecorated window kept above the others
/// and out of the task bar, holding the menu web view (only the "theme" handler). It opens
/// in the work area's corner nearest the pointer, where the panel is, and closes on Escape
/// or when it loses the focus. Its web view, and with it a web process, exists only while it
/// is open: the page, its start script and the pushes wait for the next opening.
class TrayPopup {
  public:
    TrayPopup(Size size, const std::filesystem::path& pages, LogSink log,
              PageView::Callbacks callbacks);
    ~TrayPopup();
    TrayPopup(const TrayPopup&) = delete;
    TrayPopup& operator=(const TrayPopup&) = delete;
    TrayPopup(TrayPopup&&) = delete;
    TrayPopup& operator=(TrayPopup&&) = delete;

    /// The web view while the popup is open; absent while it is closed.
    PageView* view() const { return view_.get(); }
    GtkWindow* window() const { return window_; }

    /// The page and the document-start script the view loads whenever the popup opens.
    void setPage(const std::filesystem::path& file, const std::filesystem::path& readAccess);
    void setDocumentStartScript(const std::string& source);

    void show();
    void close();
    bool shown() const;

  private:
    static gboolean onKey(GtkWidget* widget, GdkEventKey* event, gpointer self);
    static gboolean onFocusOut(GtkWidget* widget, GdkEventFocus* event, gpointer self);
    static gboolean onDelete(GtkWidget* widget, GdkEvent* event, gpointer self);
    static gboolean onIdleRelease(gpointer self);
    void placeNearPointer();
    void createView();
    void releaseView();

    Size size_;
    std::filesystem::path pages_;
    LogSink log_;
    PageView::Callbacks callbacks_;
    std::optional<std::pair<std::filesystem::path, std::filesystem::path>> page_;
    std::string startScript_;
    GtkWindow* window_;
    std::unique_ptr<PageView> view_;
    guint releaseSource_ = 0;
};

}  // namespace velmora
