#pragma once

#include <map>
#include <set>
#include <string>
#include <utility>
#include <vector>

#include "app/core/shell.hpp"

namespace velmora::testing {

/// Records everything the controller asks of a shell; the test sets the window's geometry,
/// the screen and which page files exist.
class FakeShell final : public Shell {
  public:
    struct Load {
        WebView view;
        std::filesystem::path file;
        std::filesystem::path readAccess;
    };
    struct FrameChange {
        Rect frame;
        bool animate;
    };
    struct Evaluation {
        WebView view;
        std::string script;
    };

    void createMainWindow(const std::string& title, Size contentSize) override;
    std::string windowTitle() const override { return title; }
    void setWindowTitle(const std::string& text) override;
    Rect windowFrame() const override { return frame; }
    Size frameSizeForContent(Size content) const override;
    std::optional<Rect> visibleScreenFrame() const override { return screen; }
    void setWindowFrame(const Rect& next, bool animate) override;
    void showMainWindow(Size contentSize) override;
    bool windowVisible() const override { return visible; }
    bool mainViewSeen() const override { return seen; }

    std::optional<std::filesystem::path> pageFile(std::string_view name) const override;
    void loadPage(WebView view, const std::filesystem::path& file,
                  const std::filesystem::path& readAccess) override;
    void setDocumentStartScript(WebView view, const std::string& source) override;
    void evaluate(WebView view, const std::string& script) override;

    void installMainMenu(const std::vector<Submenu>& menu) override { mainMenu = menu; }
    void setMenuItemChecked(MenuAction action, bool checked) override;
    void createHeatItem(const std::string& firstTitle, const std::string& documentStartScript,
                        Size popoverSize) override;
    void setHeatItemTitle(const std::string& text, HeatColor color) override;
    bool popoverShown() const override { return popoverOpen; }
    void showPopover() override { popoverOpen = true; }
    void closePopover() override { popoverOpen = false; }
    void showCountdownItem(const std::string& text, Rgb color) override;
    void removeCountdownItem() override { countdownItem.reset(); }

    void playSound(std::string_view name) override { sounds.emplace_back(name); }
    void showSheet(const AlertSpec& alert) override { sheets.push_back(alert); }
    void announce(const std::string& text) override { announcements.push_back(text); }
    bool openURL(const std::string& url) override;
    void applyAppearance(AppearancePref pref) override { appliedAppearances.push_back(pref); }
    void terminate() override { terminated = true; }
    void statusChanged(const StatusReport& report) override { statuses.push_back(report); }

    /// Names of the pages loaded into a view, in order.
    std::vector<std::string> pagesLoaded(WebView view) const;
    /// Scripts evaluated in a view, in order.
    std::vector<std::string> scripts(WebView view) const;
    void clearRecords();

    // The world as the test sets it.
    Rect frame{500, 300, 320, 216};
    std::optional<Rect> screen = Rect{0, 0, 1440, 875};
    double titleBarHeight = 28;
    std::set<std::string> shippedPages{"index", "expanded", "stagec", "menubar"};
    std::filesystem::path resources = "/opt/velmora/resources";

    // What the controller did.
    std::string title;
    bool windowCreated = false;
    bool visible = false;
    /// Whether the page can be seen (not minimised, hidden or covered).
    bool seen = true;
    int titleChanges = 0;
    std::vector<FrameChange> frameChanges;
    std::vector<Load> loads;
    std::vector<Evaluation> evaluations;
    std::map<WebView, std::string> documentStartScripts;
    int documentStartInstalls = 0;
    std::vector<Submenu> mainMenu;
    std::map<MenuAction, bool> checked;
    bool heatItemCreated = false;
    std::string heatItemFirstTitle;
    std::string popoverScript;
    std::optional<std::pair<std::string, HeatColor>> heatTitle;
    bool popoverOpen = false;
    std::optional<std::pair<std::string, Rgb>> countdownItem;
    int countdownItemsCreated = 0;
    std::vector<std::string> sounds;
    std::vector<AlertSpec> sheets;
    std::vector<std::string> announcements;
    std::vector<std::string> openedURLs;
    std::vector<AppearancePref> appliedAppearances;
    bool terminated = false;
    std::vector<StatusReport> statuses;
};

}  // namespace velmora::testing
