#include "app/gtk/gtk_shell.hpp"

#include <gdk/gdkx.h>

#include <system_error>
#include <utility>

#include "app/gtk/gtk_menu.hpp"

namespace velmora {

GtkShell::GtkShell(GtkApplication* application, std::filesystem::path resources,
                   std::shared_ptr<Sounder> cues, LogSink log)
    : application_(application),
      resources_(std::move(resources)),
      cues_(std::move(cues)),
      log_(std::move(log)) {
    scheme_ = std::make_unique<ColorSchemeWatch>([this](bool /*dark*/) {
        if (appearance_ == AppearancePref::autoTheme) applyDarkPreference();
    });
    addOwnIcons();
}

GtkShell::~GtkShell() {
    heatItem_.reset();
    popup_.reset();
    if (sheet_ != nullptr) gtk_widget_destroy(sheet_);
    mainView_.reset();
    if (window_ != nullptr) {
        g_signal_handlers_disconnect_by_data(window_, this);
        gtk_widget_destroy(GTK_WIDGET(window_));
    }
}

void GtkShell::createMainWindow(const std::string& title, Size contentSize) {
    window_ = GTK_WINDOW(gtk_application_window_new(application_));
    gtk_window_set_title(window_, title.c_str());
    gtk_window_set_icon_name(window_, "org.velmora.heat-monitor");
    header_ = gtk_header_bar_new();
    gtk_header_bar_set_show_close_button(GTK_HEADER_BAR(header_), TRUE);
    gtk_window_set_titlebar(window_, header_);
    mainView_ = std::make_unique<PageView>(
        WebView::main, std::vector<std::string>{"size", "stagec", "theme", "heat"}, resources_,
        log_,
        PageView::Callbacks{[this](PageMessage message) {
                                if (events_.message) events_.message(std::move(message));
                            },
                            [this] {
                                if (events_.pageFinished) events_.pageFinished(WebView::main);
                            }});
    gtk_container_add(GTK_CONTAINER(window_), mainView_->widget());
    content_ = contentSize;
    const auto frame = frameSizeForContent(contentSize);
    gtk_window_set_default_size(window_, static_cast<int>(frame.width),
                                static_cast<int>(frame.height));
    g_signal_connect(window_, "delete-event", G_CALLBACK(onDelete), this);
    watchVisibility();
    addMenuActions();
}

std::string GtkShell::windowTitle() const {
    const gchar* title = window_ != nullptr ? gtk_window_get_title(window_) : nullptr;
    return title != nullptr ? title : "";
}

void GtkShell::setWindowTitle(const std::string& title) {
    if (window_ != nullptr) gtk_window_set_title(window_, title.c_str());
}

GdkMonitor* GtkShell::monitor() const {
    auto* display = gdk_display_get_default();
    if (display == nullptr) return nullptr;
    auto* gdkWindow = window_ != nullptr ? gtk_widget_get_window(GTK_WIDGET(window_)) : nullptr;
    if (gdkWindow != nullptr) {
        if (auto* found = gdk_display_get_monitor_at_window(display, gdkWindow)) return found;
    }
    if (auto* primary = gdk_display_get_primary_monitor(display)) return primary;
    return gdk_display_get_n_monitors(display) > 0 ? gdk_display_get_monitor(display, 0) : nullptr;
}

Rect GtkShell::fromGdk(const GdkRectangle& area) const {
    GdkRectangle screen{0, 0, 0, 0};
    if (auto* found = monitor()) gdk_monitor_get_geometry(found, &screen);
    const double bottom = screen.y + screen.height;
    return Rect{static_cast<double>(area.x), bottom - (area.y + area.height),
                static_cast<double>(area.width), static_cast<double>(area.height)};
}

Size GtkShell::decoration() const {
    if (header_ == nullptr) return {};
    int natural = 0;
    gtk_widget_get_preferred_height(header_, nullptr, &natural);
    return Size{0, static_cast<double>(natural)};
}

Rect GtkShell::windowFrame() const {
    if (window_ == nullptr) return {};
    GdkRectangle area{0, 0, 0, 0};
    gtk_window_get_position(window_, &area.x, &area.y);
    const auto frame = frameSizeForContent(content_);
    area.width = static_cast<int>(frame.width);
    area.height = static_cast<int>(frame.height);
    return fromGdk(area);
}

void GtkShell::resizeContent(Size content) {
    content_ = content;
    // GTK 3 counts the header bar in a size asked for before the window is mapped, and only
    // the content afterwards.
    const auto size =
        gtk_widget_get_mapped(GTK_WIDGET(window_)) ? content : frameSizeForContent(content);
    gtk_window_resize(window_, static_cast<int>(size.width), static_cast<int>(size.height));
}

Size GtkShell::frameSizeForContent(Size content) const {
    const auto extra = decoration();
    return Size{content.width + extra.width, content.height + extra.height};
}

std::optional<Rect> GtkShell::visibleScreenFrame() const {
    auto* found = monitor();
    if (found == nullptr) return std::nullopt;
    GdkRectangle work{0, 0, 0, 0};
    gdk_monitor_get_workarea(found, &work);
    return fromGdk(work);
}

void GtkShell::setWindowFrame(const Rect& frame, bool /*animate*/) {
    if (window_ == nullptr) return;
    // GTK 3 has no animated resize; the change is immediate.
    const auto extra = decoration();
    resizeContent(Size{frame.width - extra.width, frame.height - extra.height});
    if (!GDK_IS_X11_DISPLAY(gdk_display_get_default())) return;  // Wayland places windows itself
    GdkRectangle screen{0, 0, 0, 0};
    if (auto* found = monitor()) gdk_monitor_get_geometry(found, &screen);
    const double top = (screen.y + screen.height) - frame.top();
    gtk_window_move(window_, static_cast<int>(frame.x), static_cast<int>(top));
}

void GtkShell::showMainWindow(Size contentSize) {
    if (window_ == nullptr) return;
    resizeContent(contentSize);
    gtk_window_set_position(window_, GTK_WIN_POS_CENTER);
    gtk_widget_show_all(GTK_WIDGET(window_));
    gtk_window_present(window_);
}

bool GtkShell::windowVisible() const {
    return window_ != nullptr && gtk_widget_get_visible(GTK_WIDGET(window_)) &&
           gtk_widget_get_mapped(GTK_WIDGET(window_));
}

std::optional<std::filesystem::path> GtkShell::pageFile(std::string_view name) const {
    auto file = resources_ / (std::string(name) + ".html");
    std::error_code error;
    if (std::filesystem::is_regular_file(file, error)) return file;
    // Said once per page, not on every tick that asks for it.
    if (missingPages_.insert(std::string(name)).second) {
        log_("ui: page file missing: " + file.string());
    }
    return std::nullopt;
}

void GtkShell::loadPage(WebView view, const std::filesystem::path& file,
                        const std::filesystem::path& readAccess) {
    // The popup keeps its page for the view it makes each time it opens.
    if (view == WebView::menu && popup_) {
        popup_->setPage(file, readAccess);
    } else if (auto* page = pageView(view)) {
        page->load(file, readAccess);
    }
}

void GtkShell::setDocumentStartScript(WebView view, const std::string& source) {
    if (view == WebView::menu && popup_) {
        popup_->setDocumentStartScript(source);
    } else if (auto* page = pageView(view)) {
        page->setDocumentStartScript(source);
    }
}

void GtkShell::evaluate(WebView view, const std::string& script) {
    if (auto* page = pageView(view)) page->evaluate(script);
}

void GtkShell::installMainMenu(const std::vector<Submenu>& menu) {
    auto* button = gtk_menu_button_new();
    gtk_menu_button_set_direction(GTK_MENU_BUTTON(button), GTK_ARROW_NONE);
    gtk_widget_set_tooltip_text(button, "Menu");
    auto* model = buildMenuModel(menu);
    gtk_menu_button_set_menu_model(GTK_MENU_BUTTON(button), model);
    g_object_unref(model);
    gtk_header_bar_pack_end(GTK_HEADER_BAR(header_), button);
    installAccelerators(application_, menu);
}

void GtkShell::addMenuActions() {
    addActions(G_ACTION_MAP(application_), [this](MenuAction action) {
        if (events_.menu) events_.menu(action);
    });
}

void GtkShell::setMenuItemChecked(MenuAction action, bool checked) {
    if (action == MenuAction::notifyWhenHot || action == MenuAction::figureAsText) {
        checkHeatItemEntry(action, checked);
        return;
    }
    const auto pref = appearanceOf(action);
    if (!pref || !checked) return;  // a radio group: checking one unchecks the others
    showAppearanceChecked(G_ACTION_MAP(application_), *pref);
    if (heatItem_) heatItem_->setAppearance(*pref);
}

void GtkShell::playSound(std::string_view name) {
    if (!cues_) return;
    // The presentation's chime is the short cue, its urgent alert the alarm.
    if (name == "Tink") {
        cues_->tick();
    } else {
        cues_->urgent();
    }
}

void GtkShell::showSheet(const AlertSpec& alert) {
    if (window_ == nullptr) return;
    if (sheet_ != nullptr) gtk_widget_destroy(sheet_);
    sheet_ = gtk_message_dialog_new(
        window_, static_cast<GtkDialogFlags>(GTK_DIALOG_MODAL | GTK_DIALOG_DESTROY_WITH_PARENT),
        GTK_MESSAGE_INFO, GTK_BUTTONS_NONE, "%s", alert.message.c_str());
    gtk_message_dialog_format_secondary_text(GTK_MESSAGE_DIALOG(sheet_), "%s",
                                             alert.informative.c_str());
    gtk_dialog_add_button(GTK_DIALOG(sheet_), alert.button.c_str(), GTK_RESPONSE_OK);
    g_signal_connect(sheet_, "response", G_CALLBACK(onSheetResponse), this);
    gtk_window_present(GTK_WINDOW(sheet_));
}

void GtkShell::onSheetResponse(GtkDialog* dialog, gint /*response*/, gpointer data) {
    auto* self = static_cast<GtkShell*>(data);
    if (GTK_WIDGET(dialog) == self->sheet_) self->sheet_ = nullptr;
    gtk_widget_destroy(GTK_WIDGET(dialog));
}

void GtkShell::announce(const std::string& text) {
    if (window_ == nullptr) return;
    auto* accessible = gtk_widget_get_accessible(GTK_WIDGET(window_));
    if (accessible == nullptr) return;
    // ATK's "announcement" asks screen readers to speak the text now, as VoiceOver would.
    if (g_signal_lookup("announcement", G_OBJECT_TYPE(accessible)) == 0) return;
    g_signal_emit_by_name(accessible, "announcement", text.c_str());
}

bool GtkShell::openURL(const std::string& url) {
    GError* error = nullptr;
    const bool opened = gtk_show_uri_on_window(window_, url.c_str(), GDK_CURRENT_TIME, &error);
    if (!opened) {
        log_("ui: could not open " + url + ": " +
             (error != nullptr ? error->message : "no handler"));
        g_clear_error(&error);
    }
    return opened;
}

void GtkShell::applyAppearance(AppearancePref pref) {
    appearance_ = pref;
    applyDarkPreference();
}

void GtkShell::applyDarkPreference() {
    auto* settings = gtk_settings_get_default();
    if (settings == nullptr) return;
    const bool dark = appearance_ == AppearancePref::dark ||
                      (appearance_ == AppearancePref::autoTheme && scheme_->prefersDark());
    g_object_set(settings, "gtk-application-prefer-dark-theme", dark ? TRUE : FALSE, nullptr);
}

void GtkShell::terminate() {
    g_application_quit(G_APPLICATION(application_));
}

gboolean GtkShell::onDelete(GtkWidget* /*widget*/, GdkEvent* /*event*/, gpointer data) {
    auto* self = static_cast<GtkShell*>(data);
    if (self->events_.windowClosed) {
        self->events_.windowClosed();
    } else {
        self->terminate();
    }
    return TRUE;  // the window goes with the application, after the quit line
}

}  // namespace velmora
