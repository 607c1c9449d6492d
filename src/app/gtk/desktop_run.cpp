#include "app/gtk/desktop_run.hpp"

#include "app/core/instance_lock.hpp"

#include <X11/Xlib.h>
#include <gdk/gdkx.h>
#include <glib-unix.h>
#include <unistd.h>

#include <csignal>
#include <cstdio>
#include <memory>
#include <optional>
#include <utility>

#include "app/controller/app_controller.hpp"
#include "app/controller/start_report.hpp"
#include "app/core/appearance.hpp"
#include "app/gtk/gtk_shell.hpp"
#include "app/gtk/page_view.hpp"
#include "app/headless/glib_main_loop.hpp"

namespace velmora {

bool openDesktopDisplay() {
    return gtk_init_check(nullptr, nullptr) == TRUE;
}

namespace {

/// One desktop run: the GTK application, and once it is the primary instance, the loop, the
/// shell and the controller.
class DesktopRun {
  public:
    DesktopRun(LaunchOptions opts, PlatformParts parts, std::filesystem::path resources,
               DesktopHooks hooks)
        : opts_(std::move(opts)),
          parts_(std::move(parts)),
          resources_(std::move(resources)),
          hooks_(std::move(hooks)) {}

    int run();

  private:
    static void onActivate(GApplication* application, gpointer self);
    static gboolean onSignal(gpointer application);
    static int onDisplayLost(Display* display);
    void start(GtkApplication* application);

    static DesktopRun* current_;

    LaunchOptions opts_;
    PlatformParts parts_;
    std::filesystem::path resources_;
    DesktopHooks hooks_;
    /// Taken by the first instance on this display before it touches the data directory, so a
    /// headless watchdog on the same directory and this window never both count down.
    std::optional<InstanceLock::Outcome> lock_;
    int exitStatus_ = 0;
    std::optional<GlibMainLoop> loop_;
    std::unique_ptr<GtkShell> shell_;
    std::unique_ptr<AppController> app_;
};

DesktopRun* DesktopRun::current_ = nullptr;

int DesktopRun::run() {
    const std::string id =
        hooks_.applicationId.empty() ? std::string(bundleIdentifier) : hooks_.applicationId;
    auto* application = gtk_application_new(id.c_str(), G_APPLICATION_DEFAULT_FLAGS);
    g_signal_connect(application, "activate", G_CALLBACK(onActivate), this);
    GError* error = nullptr;
    if (g_application_register(G_APPLICATION(application), nullptr, &error) == FALSE) {
        // Without a session bus the window still works; only the one-per-display rule is lost.
        std::fprintf(stderr, "velmora-heat-monitor: %s\n", error->message);
        g_clear_error(&error);
    }
    if (g_application_get_is_remote(G_APPLICATION(application)) == TRUE) {
        std::fprintf(stderr,
                     "velmora-heat-monitor: already running on this display; showing its "
                     "window\n");
    }
    std::vector<unsigned> signals;
    for (const int signal : {SIGINT, SIGTERM, SIGHUP}) {
        signals.push_back(g_unix_signal_add(signal, onSignal, application));
    }
    current_ = this;
    // The switches are ours, already read: GApplication sees only the program name.
    char name[] = "velmora-heat-monitor";
    char* argv[] = {name, nullptr};
    const int status = g_application_run(G_APPLICATION(application), 1, argv);
    if (app_) app_->willTerminate();
    app_.reset();
    shell_.reset();
    loop_.reset();
    current_ = nullptr;
    for (const auto source : signals)
        g_source_remove(source);
    g_object_unref(application);
    return exitStatus_ != 0 ? exitStatus_ : status;
}

void DesktopRun::onActivate(GApplication* application, gpointer data) {
    auto* self = static_cast<DesktopRun*>(data);
    if (self->shell_) {
        // A second launch on this display: show the window that is already there.
        if (auto* window = self->shell_->window()) gtk_window_present(window);
        return;
    }
    self->start(GTK_APPLICATION(application));
}

void DesktopRun::start(GtkApplication* application) {
    lock_.emplace(InstanceLock::acquire(opts_.dataDir));
    if (!instanceMayRun(*lock_, opts_.dataDir)) {
        exitStatus_ = 1;
        g_application_quit(G_APPLICATION(application));
        return;
    }
    const auto sandboxNote = prepareWebContext(resources_);
    loop_.emplace();
    shell_ = std::make_unique<GtkShell>(application, resources_, parts_.sounds,
                                        [this](const std::string& line) {
                                            if (app_) app_->log(line);
                                        });
    app_ = std::make_unique<AppController>(std::move(opts_), *shell_, *loop_,
                                           std::move(parts_.services));
    auto& app = *app_;
    shell_->connect(ShellEvents{
        .message = [&app](PageMessage message) { app.receive(std::move(message)); },
        .pageFinished = [&app](WebView view) { app.pageFinished(view); },
        .menu = [&app](MenuAction action) { app.menuAction(action); },
        .windowClosed = [&app] { app.windowClosed(); },
        .heatItemActivated = [&app] { app.toggleMenuPopover(); },
        .mainViewSeenAgain = [&app] { app.mainViewSeenAgain(); },
    });
    if (GDK_IS_X11_DISPLAY(gdk_display_get_default())) XSetIOErrorHandler(onDisplayLost);
    app.start();
    if (sandboxNote) app.log(*sandboxNote);
    reportStartProblems(app);
    if (hooks_.started) {
        DesktopSession session{application, *shell_, app};
        hooks_.started(session);
    }
}

gboolean DesktopRun::onSignal(gpointer application) {
    g_application_quit(G_APPLICATION(application));
    return G_SOURCE_CONTINUE;
}

int DesktopRun::onDisplayLost(Display* /*display*/) {
    // Xlib ends the process once this returns, and nothing may touch the display any more:
    // write the log's last lines and leave with a clean status.
    if (current_ != nullptr && current_->app_) {
        auto& app = *current_->app_;
        app.log("ui: the display went away; quitting");
        app.willTerminate();
        app.drainLog();
    }
    std::fputs("velmora-heat-monitor: the display went away; quitting\n", stderr);
    _exit(0);
}

}  // namespace

int runDesktop(LaunchOptions opts, PlatformParts parts, const std::filesystem::path& resources,
               DesktopHooks hooks) {
    DesktopRun run(std::move(opts), std::move(parts), resources, std::move(hooks));
    return run.run();
}

}  // namespace velmora
