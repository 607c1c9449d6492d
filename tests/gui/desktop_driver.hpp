#pragma once

#include <filesystem>
#include <functional>
#include <optional>
#include <string>
#include <vector>

#include "app/gtk/desktop_run.hpp"
#include "app/gtk/gtk_shell.hpp"

namespace velmora::testing {

/// Drives a running desktop application from inside its own main loop: waits for
/// conditions while the loop turns, runs script in the page, presses keys, takes pictures.
class DesktopDriver {
  public:
    explicit DesktopDriver(DesktopSession& session) : session(session) {}

    /// Turns the main loop until `condition` holds; false after `seconds`.
    bool waitUntil(const std::function<bool()>& condition, double seconds) const;
    /// Lets the loop run for `seconds`.
    void pause(double seconds) const;
    /// The value of `script` in the main page as text; absent on an error or time-out.
    std::optional<std::string> js(const std::string& script) const;
    bool waitForJs(const std::string& script, const std::string& expected, double seconds) const;
    /// The log's messages without their time stamps, everything logged so far included.
    std::vector<std::string> logLines() const;
    int countLog(const std::string& part) const;
    bool waitForLog(const std::string& part, double seconds) const;
    /// Presses and releases Ctrl+`keyval` on the window, through GTK's own event path.
    void pressControl(unsigned keyval) const;
    /// The web view's size in logical pixels.
    std::pair<int, int> contentSize() const;
    /// Writes the window as it is on screen to `file` (PNG).
    bool snapshot(const std::filesystem::path& file) const;
    /// Chooses an appearance the way the header bar's menu does.
    void chooseAppearance(const std::string& raw) const;

    DesktopSession& session;
};

/// Where the tests write their pictures: "gui-screenshots" in the build folder.
std::filesystem::path screenshotDir();

}  // namespace velmora::testing
