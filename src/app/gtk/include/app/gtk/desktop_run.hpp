#pragma once

#include <gtk/gtk.h>

#include <filesystem>
#include <functional>
#include <string>

#include "app/controller/platform_services.hpp"
#include "app/core/launch_options.hpp"

namespace velmora {

class AppController;
class GlibMainLoop;
class GtkShell;

/// Opens the display for GTK; false when there is none or it cannot be opened.
bool openDesktopDisplay();

/// What a running desktop application is made of, for whoever drives it from inside.
struct DesktopSession {
    GtkApplication* application;
    GtkShell& shell;
    AppController& app;
};

/// Ways into a run that only tests use: another application id (so that runs in one process
/// do not meet as one application), and a call once the window is up.
struct DesktopHooks {
    std::string applicationId;
    std::function<void(DesktopSession&)> started;
};

/// Runs the watchdog with its desktop window until the user quits, closes the window, a
/// termination signal arrives or the display goes away; returns the exit status. A second
/// launch on the same display shows the first one's window and returns at once.
int runDesktop(LaunchOptions opts, PlatformParts parts, const std::filesystem::path& resources,
               DesktopHooks hooks = {});

}  // namespace velmora
