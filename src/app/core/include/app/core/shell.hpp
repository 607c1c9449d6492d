#pragma once

#include <filesystem>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include <nlohmann/json.hpp>

#include "app/core/appearance.hpp"
#include "app/core/geometry.hpp"
#include "app/core/menu_model.hpp"
#include "app/core/status_report.hpp"

namespace velmora {

/// The two web views: the main window's and the menu-bar popover's.
enum class WebView { main, menu };

/// A script message as a page sent it, with what the shell knows of the sending frame.
struct PageMessage {
    WebView view = WebView::main;
    std::string name;
    nlohmann::json body;
    bool mainFrame = false;
    /// The address of the frame's request; absent when the toolkit gives none.
    std::optional<std::string> frameURL;
};

/// Calibrated RGB, each part 0…1, opaque.
struct Rgb {
    double red = 0;
    double green = 0;
    double blue = 0;
    bool operator==(const Rgb&) const = default;
};

/// The heat item's colours: the system's label, yellow and red, which follow the appearance.
enum class HeatColor { label, yellow, red };

/// What the heat item shows besides its title: the figure its icon carries and its tooltip.
struct HeatItemDetails {
    std::optional<double> celsius;
    std::string tooltipTitle;
    std::string tooltipText;
    bool operator==(const HeatItemDetails&) const = default;
};

struct AlertSpec {
    std::string message;
    std::string informative;
    std::string button;
    bool operator==(const AlertSpec&) const = default;
};

/// What a platform's user interface performs for the application. A shell only does what it is
/// told and reports what the user did to the controller; it makes no decisions. A shell
/// without a display (headless) accepts every call and ignores what it cannot show.
class Shell {
  public:
    Shell() = default;
    virtual ~Shell() = default;
    Shell(const Shell&) = delete;
    Shell& operator=(const Shell&) = delete;
    Shell(Shell&&) = delete;
    Shell& operator=(Shell&&) = delete;

    // The main window.
    virtual void createMainWindow(const std::string& title, Size contentSize) = 0;
    virtual std::string windowTitle() const = 0;
    virtual void setWindowTitle(const std::string& title) = 0;
    virtual Rect windowFrame() const = 0;
    /// The frame size of a window whose content has `content` size.
    virtual Size frameSizeForContent(Size content) const = 0;
    /// The visible frame of the window's screen (else the main screen); nothing without one.
    virtual std::optional<Rect> visibleScreenFrame() const = 0;
    virtual void setWindowFrame(const Rect& frame, bool animate) = 0;
    /// Sizes the content, centres the window, shows it and brings the application forward.
    virtual void showMainWindow(Size contentSize) = 0;
    virtual bool windowVisible() const = 0;
    /// Whether anyone can see the main window's page now: false while it is minimised,
    /// hidden or wholly covered. A shell that cannot tell says true.
    virtual bool mainViewSeen() const { return true; }

    // Web views.
    /// The bundled page file of that name ("index", "stagec", …), when it is shipped.
    virtual std::optional<std::filesystem::path> pageFile(std::string_view name) const = 0;
    /// Loads `file`, letting the page read what lies in `readAccess` (its own folder).
    virtual void loadPage(WebView view, const std::filesystem::path& file,
                          const std::filesystem::path& readAccess) = 0;
    /// Replaces every document-start script of the view with `source` (main frame only).
    virtual void setDocumentStartScript(WebView view, const std::string& source) = 0;
    /// Evaluates `script` in the view's page; results and errors are ignored.
    virtual void evaluate(WebView view, const std::string& script) = 0;

    // Menus and menu-bar items.
    virtual void installMainMenu(const std::vector<Submenu>& menu) = 0;
    virtual void setMenuItemChecked(MenuAction action, bool checked) = 0;
    /// The heat item with its first title, and its popover whose web view carries only the
    /// "theme" handler and `documentStartScript`.
    virtual void createHeatItem(const std::string& title, const std::string& documentStartScript,
                                Size popoverSize) = 0;
    virtual void setHeatItemTitle(const std::string& title, HeatColor color) = 0;
    /// The figure and the tooltip; a shell whose item has neither ignores them.
    virtual void setHeatItemDetails(const HeatItemDetails& /*details*/) {}
    virtual bool popoverShown() const = 0;
    virtual void showPopover() = 0;
    virtual void closePopover() = 0;
    /// Creates the countdown item when it is missing, then sets its bold title.
    virtual void showCountdownItem(const std::string& title, Rgb color) = 0;
    virtual void removeCountdownItem() = 0;

    // Cues and the rest.
    virtual void playSound(std::string_view name) = 0;
    virtual void showSheet(const AlertSpec& alert) = 0;
    virtual void announce(const std::string& text) = 0;
    /// False when the address could not be opened.
    virtual bool openURL(const std::string& url) = 0;
    virtual void applyAppearance(AppearancePref pref) = 0;
    /// Ends the application's run loop (the quit menu item, the last window closed).
    virtual void terminate() = 0;

    /// The watchdog's state after every tick and live sample, for shells that show it
    /// themselves (a terminal status line); the others ignore it.
    virtual void statusChanged(const StatusReport& /*report*/) {}
    /// Whether the shell shows every live sample (pages, a status line); a shell that shows
    /// none lets a calm watchdog hear of only some of them.
    virtual bool showsEverySample() const { return true; }
};

}  // namespace velmora
