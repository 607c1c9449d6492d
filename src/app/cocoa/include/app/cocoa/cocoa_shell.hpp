#pragma once

#include <memory>

#include "actuators/named_cue_sounder.hpp"
#include "app/cocoa/shell_events.hpp"
#include "app/core/shell.hpp"

namespace velmora {

/// The Mac's user interface: the main window with its web view, the main menu, the heat item
/// with its popover, the countdown item, sheets, sounds and announcements (AppKit and WebKit).
/// It performs what the controller tells it and reports what the user did through the events
/// it is connected to; it makes no decisions. Main thread only.
class CocoaShell final : public Shell {
  public:
    /// `play` sounds a named system sound.
    explicit CocoaShell(PlaySound play);
    ~CocoaShell() override;
    CocoaShell(const CocoaShell&) = delete;
    CocoaShell& operator=(const CocoaShell&) = delete;
    CocoaShell(CocoaShell&&) = delete;
    CocoaShell& operator=(CocoaShell&&) = delete;

    /// Where the user's actions go from now on.
    void connect(ShellEvents events);

    void createMainWindow(const std::string& title, Size contentSize) override;
    std::string windowTitle() const override;
    void setWindowTitle(const std::string& title) override;
    Rect windowFrame() const override;
    Size frameSizeForContent(Size content) const override;
    std::optional<Rect> visibleScreenFrame() const override;
    void setWindowFrame(const Rect& frame, bool animate) override;
    void showMainWindow(Size contentSize) override;
    bool windowVisible() const override;

    std::optional<std::filesystem::path> pageFile(std::string_view name) const override;
    void loadPage(WebView view, const std::filesystem::path& file,
                  const std::filesystem::path& readAccess) override;
    void setDocumentStartScript(WebView view, const std::string& source) override;
    void evaluate(WebView view, const std::string& script) override;

    void installMainMenu(const std::vector<Submenu>& menu) override;
    void setMenuItemChecked(MenuAction action, bool checked) override;
    void createHeatItem(const std::string& title, const std::string& documentStartScript,
                        Size popoverSize) override;
    void setHeatItemTitle(const std::string& title, HeatColor color) override;
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

    /// The AppKit objects; defined where Objective-C++ is compiled.
    struct Parts;

  private:
    std::unique_ptr<Parts> parts_;
};

}  // namespace velmora
