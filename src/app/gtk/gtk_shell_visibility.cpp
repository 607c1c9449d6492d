// Whether anyone can see the main window's page: the controller pushes nothing to a page that
// is minimised, hidden or wholly covered, and brings it up to date when it shows again.
#include "app/gtk/gtk_shell.hpp"

namespace velmora {

void GtkShell::watchVisibility() {
    gtk_widget_add_events(GTK_WIDGET(window_), GDK_VISIBILITY_NOTIFY_MASK | GDK_STRUCTURE_MASK);
    g_signal_connect(window_, "window-state-event", G_CALLBACK(onWindowState), this);
    g_signal_connect(window_, "visibility-notify-event", G_CALLBACK(onVisibility), this);
    g_signal_connect(window_, "map-event", G_CALLBACK(onMapped), this);
}

bool GtkShell::mainViewSeen() const {
    return window_ != nullptr && gtk_widget_get_mapped(GTK_WIDGET(window_)) == TRUE &&
           !iconified_ && !obscured_;
}

gboolean GtkShell::onWindowState(GtkWidget* /*widget*/, GdkEventWindowState* event, gpointer self) {
    auto* shell = static_cast<GtkShell*>(self);
    const bool before = shell->mainViewSeen();
    shell->iconified_ = (event->new_window_state & GDK_WINDOW_STATE_ICONIFIED) != 0;
    shell->visibilityChanged(before);
    return FALSE;
}

// X11 tells a window that is wholly covered; a compositing display never does, and then the
// page simply stays "seen".
gboolean GtkShell::onVisibility(GtkWidget* /*widget*/, GdkEvent* event, gpointer self) {
    auto* shell = static_cast<GtkShell*>(self);
    const bool before = shell->mainViewSeen();
    shell->obscured_ = event->visibility.state == GDK_VISIBILITY_FULLY_OBSCURED;
    shell->visibilityChanged(before);
    return FALSE;
}

// A window that was hidden is up to date as soon as it is mapped again; no visibility event
// has to come first.
gboolean GtkShell::onMapped(GtkWidget* /*widget*/, GdkEvent* /*event*/, gpointer self) {
    auto* shell = static_cast<GtkShell*>(self);
    shell->obscured_ = false;
    shell->visibilityChanged(false);
    return FALSE;
}

void GtkShell::visibilityChanged(bool seenBefore) const {
    if (!seenBefore && mainViewSeen() && events_.mainViewSeenAgain) events_.mainViewSeenAgain();
}

}  // namespace velmora
