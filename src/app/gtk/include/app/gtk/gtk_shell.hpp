#pragma once

#include <gtk/gtk.h>

#include <filesystem>
#include <functional>
#include <map>
#include <memory>
#include <set>
#include <string>

#include "actuators/sounder.hpp"
#include "app/core/shell.hpp"
#include "app/gtk/color_scheme.hpp"
#include "app/gtk/page_view.hpp"
#include "app/gtk/tray_popup.hpp"
#include "app/tray/heat_item.hpp"

namespace velmora {

/// Where the shell reports what the user did.
struct ShellEvents {
    std::function<void(PageMessage)> message;
    std::function<void(WebView)> pageFinished;
    std::function<void(MenuAction)> menu;
    std::function<void()> windowClosed;
    /// "Live readings…" of the tray item: the controller toggles the popup.
    std::function<void()> heatItemActivated;
    /// The main window's page can be seen again after it was minimised, hidden or covered.
    std::function<void()> mainViewSeenAgain;
};

/// The desktop window on Linux: a GTK application window with a header bar and its menu,
/// the pages in WebKitGTK, modal dialogs, screen-reader announcements and the light/dark
/// preference. Geometry is in GTK logical pixels, converted at this edge to the bottom-left
/// origin the controller counts from.
class GtkShell final : public Shell {
  public:
    GtkShell(GtkApplication* application, std::filesystem::path resources,
             std::shared_ptr<Sounder> cues, LogSink log);
    ~GtkShell() override;
    GtkShell(const GtkShell&) = delete;
    GtkShell& operator=(const GtkShell&) = delete;
    GtkShell(GtkShell&&) = delete;
    GtkShell& operator=(GtkShell&&) = delete;

    /// Set before the controller starts.
    void connect(ShellEvents events) { events_ = std::move(events); }

    void createMainWindow(const std::string& title, Size contentSize) override;
    std::string windowTitle() const override;
    void setWindowTitle(const std::string& title) override;
    Rect windowFrame() const override;
    Size frameSizeForContent(Size content) const override;
    std::optional<Rect> visibleScreenFrame() const override;
    void setWindowFrame(const Rect& frame, bool animate) override;
    void showMainWindow(Size contentSize) override;
    bool windowVisible() const override;
    bool mainViewSeen() const override;

    std::optional<std::filesystem::path> pageFile(std::string_view name) const override;
    void loadPage(WebView view, const std::filesystem::path& file,
                  const std::filesystem::path& readAccess) override;
    void setDocumentStartScript(WebView view, const std::string& source) override;
    void evaluate(WebView view, const std::string& script) override;

    void installMainMenu(const std::vector<Submenu>& menu) override;
    void setMenuItemChecked(MenuAction action, bool checked) override;

    // The tray item and its live-readings popup (gtk_shell_tray.cpp).
    void createHeatItem(const std::string& title, const std::string& documentStartScript,
                        Size popoverSize) override;
    void setHeatItemTitle(const std::string& title, HeatColor color) override;
    void setHeatItemDetails(const HeatItemDetails& details) override;
    bool popoverShown() const override;
    void showPopover() override;
    void closePopover() override;
    void showCountdownItem(const std::string& title, Rgb color) override;
    void removeCountdownItem() override;

    void playSound(std::string_view name) override;
    void showSheet(const AlertSpec& alert) override;
    void announce(const std::string& text) override;
    bool openURL(const std::string& url) override;
    void applyAppearance(AppearancePref pref) override;
    void terminate() override;

    GtkWindow* window() const { return window_; }
    /// The page view of the main window; absent before the window exists.
    PageView* mainView() const { return mainView_.get(); }
    /// The dialog `showSheet` opened last, while it is open.
    GtkWidget* openSheet() const { return sheet_; }
    /// The tray item and the popup; absent before `createHeatItem`.
    HeatItem* heatItem() const { return heatItem_.get(); }
    TrayPopup* popup() const { return popup_.get(); }

  private:
    static gboolean onDelete(GtkWidget* widget, GdkEvent* event, gpointer self);
    // What can hide the page (gtk_shell_visibility.cpp).
    void watchVisibility();
    static gboolean onWindowState(GtkWidget* widget, GdkEventWindowState* event, gpointer self);
    static gboolean onVisibility(GtkWidget* widget, GdkEvent* event, gpointer self);
    static gboolean onMapped(GtkWidget* widget, GdkEvent* event, gpointer self);
    void visibilityChanged(bool seenBefore) const;
    static void onSheetResponse(GtkDialog* dialog, gint response, gpointer self);
    void addMenuActions();
    /// The main window's view or the popup's; absent while that view does not exist.
    PageView* pageView(WebView view) const;
    /// Lets GTK find the application's icons where the system's theme may not have them.
    void addOwnIcons() const;
    HeatItemActions heatItemActions();
    bool switchStartAtLogin(bool on);
    void checkHeatItemEntry(MenuAction action, bool checked);
    void applyDarkPreference();
    /// The bottom-left-origin frame of GDK's top-left rectangle, against the monitor.
    Rect fromGdk(const GdkRectangle& area) const;
    GdkMonitor* monitor() const;
    Size decoration() const;
    void resizeContent(Size content);

    GtkApplication* application_;
    std::filesystem::path resources_;
    std::shared_ptr<Sounder> cues_;
    LogSink log_;
    ShellEvents events_;
    GtkWindow* window_ = nullptr;
    GtkWidget* header_ = nullptr;
    /// The content size last asked for; the window follows it once the display agrees.
    Size content_;
    std::unique_ptr<PageView> mainView_;
    GtkWidget* sheet_ = nullptr;
    AppearancePref appearance_ = AppearancePref::autoTheme;
    std::unique_ptr<ColorSchemeWatch> scheme_;
    mutable std::set<std::string> missingPages_;
    std::unique_ptr<TrayPopup> popup_;
    std::unique_ptr<HeatItem> heatItem_;
    bool iconified_ = false;
    bool obscured_ = false;
};

}  // namespace velmora
