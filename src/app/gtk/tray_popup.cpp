#include "app/gtk/tray_popup.hpp"

#include <gdk/gdkkeysyms.h>

#include <string>
#include <utility>
#include <vector>

#include "app/core/appearance.hpp"
#include "app/tray/popup_placement.hpp"

namespace velmora {

TrayPopup::TrayPopup(Size size, const std::filesystem::path& pages, LogSink log,
                     PageView::Callbacks callbacks)
    : size_(size),
      pages_(pages),
      log_(std::move(log)),
      callbacks_(std::move(callbacks)),
      window_(GTK_WINDOW(gtk_window_new(GTK_WINDOW_TOPLEVEL))) {
    g_object_ref_sink(window_);
    gtk_window_set_title(window_, "Live readings");
    gtk_window_set_icon_name(window_, std::string(bundleIdentifier).c_str());
    gtk_window_set_decorated(window_, FALSE);
    gtk_window_set_resizable(window_, FALSE);
    gtk_window_set_keep_above(window_, TRUE);
    gtk_window_set_skip_taskbar_hint(window_, TRUE);
    gtk_window_set_skip_pager_hint(window_, TRUE);
    // A utility window still takes the keyboard focus, which Escape and focus loss need.
    gtk_window_set_type_hint(window_, GDK_WINDOW_TYPE_HINT_UTILITY);
    gtk_window_set_default_size(window_, static_cast<int>(size.width),
                                static_cast<int>(size.height));
    g_signal_connect(window_, "key-press-event", G_CALLBACK(onKey), this);
    g_signal_connect(window_, "focus-out-event", G_CALLBACK(onFocusOut), this);
    g_signal_connect(window_, "delete-event", G_CALLBACK(onDelete), this);
}

TrayPopup::~TrayPopup() {
    g_signal_handlers_disconnect_by_data(window_, this);
    if (releaseSource_ != 0) g_source_remove(releaseSource_);
    releaseView();
    gtk_widget_destroy(GTK_WIDGET(window_));
    g_object_unref(window_);
}

void TrayPopup::setPage(const std::filesystem::path& file,
                        const std::filesystem::path& readAccess) {
    page_.emplace(file, readAccess);
    if (view_) view_->load(file, readAccess);
}

void TrayPopup::setDocumentStartScript(const std::string& source) {
    startScript_ = source;
    if (view_) view_->setDocumentStartScript(source);
}

void TrayPopup::createView() {
    view_ = std::make_unique<PageView>(WebView::menu, std::vector<std::string>{"theme"}, pages_,
                                       log_, callbacks_);
    gtk_widget_set_size_request(view_->widget(), static_cast<int>(size_.width),
                                static_cast<int>(size_.height));
    gtk_container_add(GTK_CONTAINER(window_), view_->widget());
    if (!startScript_.empty()) view_->setDocumentStartScript(startScript_);
    if (page_) view_->load(page_->first, page_->second);
}

// The view's widget goes with the window's child; the view object must not outlive it.
void TrayPopup::releaseView() {
    if (!view_) return;
    gtk_container_remove(GTK_CONTAINER(window_), view_->widget());
    view_.reset();
}

void TrayPopup::show() {
    if (!view_) createView();
    placeNearPointer();
    gtk_widget_show_all(GTK_WIDGET(window_));
    gtk_window_present(window_);
}

void TrayPopup::close() {
    gtk_widget_hide(GTK_WIDGET(window_));
    // Released once the event that closed it is over, unless it opened again meanwhile.
    if (releaseSource_ == 0) releaseSource_ = g_idle_add(onIdleRelease, this);
}

gboolean TrayPopup::onIdleRelease(gpointer self) {
    auto* popup = static_cast<TrayPopup*>(self);
    popup->releaseSource_ = 0;
    if (!popup->shown()) popup->releaseView();
    return G_SOURCE_REMOVE;
}

bool TrayPopup::shown() const {
    return gtk_widget_get_visible(GTK_WIDGET(window_)) == TRUE;
}

void TrayPopup::placeNearPointer() {
    auto* display = gdk_display_get_default();
    auto* seat = display != nullptr ? gdk_display_get_default_seat(display) : nullptr;
    auto* pointer = seat != nullptr ? gdk_seat_get_pointer(seat) : nullptr;
    if (pointer == nullptr) return;
    ScreenPoint at;
    gdk_device_get_position(pointer, nullptr, &at.x, &at.y);
    auto* monitor = gdk_display_get_monitor_at_point(display, at.x, at.y);
    if (monitor == nullptr) return;
    GdkRectangle work{0, 0, 0, 0};
    gdk_monitor_get_workarea(monitor, &work);
    const auto origin = popupOrigin({work.x, work.y, work.width, work.height}, at,
                                    static_cast<int>(size_.width), static_cast<int>(size_.height));
    gtk_window_move(window_, origin.x, origin.y);
}

gboolean TrayPopup::onKey(GtkWidget* /*widget*/, GdkEventKey* event, gpointer self) {
    if (event->keyval != GDK_KEY_Escape) return FALSE;
    static_cast<TrayPopup*>(self)->close();
    return TRUE;
}

gboolean TrayPopup::onFocusOut(GtkWidget* /*widget*/, GdkEventFocus* /*event*/, gpointer self) {
    static_cast<TrayPopup*>(self)->close();
    return FALSE;
}

gboolean TrayPopup::onDelete(GtkWidget* /*widget*/, GdkEvent* /*event*/, gpointer self) {
    static_cast<TrayPopup*>(self)->close();
    return TRUE;  // the window is kept for the next opening
}

}  // namespace velmora
