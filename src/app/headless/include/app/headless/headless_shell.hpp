#pragma once

#include <cstdio>
#include <functional>
#include <memory>

#include "actuators/sounder.hpp"
#include "app/core/shell.hpp"

namespace velmora {

/// The shell of a machine without a display: no pages, windows or menus (those calls are
/// accepted and ignored), a status line on a terminal and one printed line per change.
class HeadlessShell final : public Shell {
  public:
    /// `cues` plays the two presentation sounds (absent: silent); `quit` ends the run;
    /// `interactive` says whether `out` is a terminal that can keep a status line.
    HeadlessShell(std::FILE* out, bool interactive, std::shared_ptr<Sounder> cues,
                  std::function<void()> quit);

    void createMainWindow(const std::string& text, Size /*contentSize*/) override { title_ = text; }
    std::string windowTitle() const override { return title_; }
    void setWindowTitle(const std::string& text) override { title_ = text; }
    Rect windowFrame() const override { return frame_; }
    Size frameSizeForContent(Size content) const override { return content; }
    std::optional<Rect> visibleScreenFrame() const override { return std::nullopt; }
    void setWindowFrame(const Rect& frame, bool /*animate*/) override { frame_ = frame; }
    void showMainWindow(Size /*contentSize*/) override {}
    bool windowVisible() const override { return false; }

    std::optional<std::filesystem::path> pageFile(std::string_view /*name*/) const override {
        return std::nullopt;
    }
    void loadPage(WebView, const std::filesystem::path&, const std::filesystem::path&) override {}
    void setDocumentStartScript(WebView, const std::string&) override {}
    void evaluate(WebView, const std::string&) override {}

    void installMainMenu(const std::vector<Submenu>&) override {}
    void setMenuItemChecked(MenuAction, bool) override {}
    void createHeatItem(const std::string&, const std::string&, Size) override {}
    void setHeatItemTitle(const std::string&, HeatColor) override {}
    bool popoverShown() const override { return false; }
    void showPopover() override {}
    void closePopover() override {}
    void showCountdownItem(const std::string&, Rgb) override {}
    void removeCountdownItem() override {}

    void playSound(std::string_view name) override;
    void showSheet(const AlertSpec&) override {}
    void announce(const std::string&) override {}
    bool openURL(const std::string&) override { return false; }
    void applyAppearance(AppearancePref) override {}
    void terminate() override;
    void statusChanged(const StatusReport& report) override;

    /// Clears the status line so that later output starts on a clean line.
    void finish();

  private:
    void printLine(const std::string& line);
    void drawStatus();
    /// Writes and flushes; after a failed write (the reader of a pipe has gone) nothing more
    /// is written, and the watchdog goes on without its status.
    void write(const std::string& text);

    std::FILE* out_;
    bool interactive_;

  public:
    /// Only a terminal's status line shows each sample.
    bool showsEverySample() const override { return interactive_; }
    std::shared_ptr<Sounder> cues_;
    std::function<void()> quit_;
    std::string title_;
    Rect frame_;
    std::optional<StatusReport> last_;
    std::string shownStatus_;
    bool outputGone_ = false;
};

}  // namespace velmora
