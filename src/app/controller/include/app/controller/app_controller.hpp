#pragma once

#include <cstdint>
#include <functional>
#include <memory>
#include <optional>
#include <string>

#include <nlohmann/json_fwd.hpp>

#include "actuators/dry_run_shutdowner.hpp"
#include "actuators/shutdowner.hpp"
#include "actuators/sounder.hpp"
#include "app/controller/history_recorder.hpp"
#include "app/core/appearance.hpp"
#include "app/core/launch_options.hpp"
#include "app/core/main_loop.hpp"
#include "app/core/presentation_rules.hpp"
#include "app/core/shell.hpp"
#include "app/fleet/watchdog_observer.hpp"
#include "engine/engine.hpp"
#include "metrics/heat_collector.hpp"
#include "metrics/live_sampler.hpp"
#include "store/file_logger.hpp"

namespace velmora {

/// What the controller is built from besides the options, the shell and the loop: the live
/// sampler, the preference store and the platform's real actuators (made only when chosen).
struct AppServices {
    /// Sampled on the loop's own thread; used when `makeCollector` is not given.
    std::unique_ptr<HeatCollector> collector;
    /// Builds the collector on a sampling thread of its own (and again after a read hung), so
    /// that no read ever blocks the loop.
    LiveSampler::MakeCollector makeCollector;
    std::unique_ptr<PreferenceStore> preferences;
    /// The platform's real shutdowner, given the application log and the loop's post.
    std::function<std::shared_ptr<Shutdowner>(LogSink, Post)> realShutdowner;
    /// The platform's harmless permission check, for a dry run's "--real-probe".
    BlockingProbe realProbe;
    /// The platform's sound player for the engine's cues.
    std::function<std::shared_ptr<Sounder>()> systemSounder;
    /// The per-launch token; a fresh random one when empty.
    std::string token;
    /// Outside watchers told of every tick, sample and shutdown call (the service manager).
    std::vector<std::shared_ptr<WatchdogObserver>> observers;
    /// Also given every log line (the journal); may be empty.
    std::function<void(const std::string&)> logMirror;
    /// Given the application log once it is open, for parts made before it (the sound player).
    std::function<void(LogSink)> connectLog;
    /// Given, once the engine is built, what cancels the countdown as the emergency page's
    /// button does, for parts made before it (the desktop notifications' action).
    std::function<void(std::function<void()>)> connectCountdownCancel;
};

/// The presentation's state, kept by the controller; tests read it through
/// `AppController::presentation`.
struct PresentationState {
    AlertStage liveStage = AlertStage::none;
    AlertStage lastAnnounced = AlertStage::none;
    UIMode mode = UIMode::home;
    bool isExpanded = false;
    bool wantSettings = false;
    /// The page last loaded into the main web view; empty until one was found.
    std::string pageName;
    std::string liveJSON = "{}";
    /// What the main page was last given to render, without the milliseconds; empty when the
    /// page must be rendered on the next tick (a new page, or one that just sent an action).
    std::string shownRender;
    /// The number of the last sample shown, from 1.
    std::int64_t liveCount = 0;
    bool heatItem = false;
};

/// The application's logic on every platform: start-up, the bridge to the pages, the stage
/// presentation, the menus and the appearance. It owns the watchdog's parts; the shell only
/// performs what it is told and reports what the user did. Everything runs on `loop`.
class AppController {
  public:
    AppController(LaunchOptions opts, Shell& shell, MainLoop& loop, AppServices services);
    ~AppController();
    AppController(const AppController&) = delete;
    AppController& operator=(const AppController&) = delete;
    AppController(AppController&&) = delete;
    AppController& operator=(AppController&&) = delete;

    /// The whole start-up: log, actuators, stores, engine, window, menus, first tick, timers.
    void start();
    /// Writes the quit line.
    void willTerminate() const;
    /// One line to the log, when the log is open.
    void log(const std::string& line) const;
    /// Waits until every line logged so far is written, when the log is open.
    void drainLog() const;

    // What the shell reports.
    void receive(PageMessage message);
    void pageFinished(WebView view);
    /// The main window's page can be seen again: it gets what it missed.
    void mainViewSeenAgain();
    void menuAction(MenuAction action);
    void toggleMenuPopover();
    /// The user closed the main window: the application ends, as with Quit.
    void windowClosed();

    /// Makes the window large, as the page's expand button does.
    void expand(bool animate);

    /// The loop's timer bodies, also run after page commands: one presentation tick (engine,
    /// page mode, render) and one live sample on the loop's own collector. Public so that a
    /// benchmark can drive them without timers.
    void tick();
    void sampleLive();

    // Read-only views of the controller's state, for the shells' messages and for tests.
    const LaunchOptions& options() const { return opts_; }
    /// The per-launch token that page messages must carry.
    const std::string& token() const { return token_; }
    AppearancePref appearance() const { return appearance_; }
    bool notifyWhenHot() const { return notifyWhenHot_; }
    const PresentationState& presentation() const { return ui_; }
    /// The kept history; null until `start` made it.
    const HistoryRecorder* history() const { return history_.get(); }
    /// The watchdog; null until `start` built it.
    const Engine* engine() const { return engine_.get(); }
    /// The actuators `start` chose for the options.
    const std::shared_ptr<Shutdowner>& shutdowner() const { return shutdowner_; }
    const std::shared_ptr<Sounder>& sounder() const { return sounder_; }
    /// Whether the answer of "--consent" reached the disk; it holds for the run either way.
    bool startConsentSaved() const { return startConsentSaved_; }
    /// The window's title when no countdown or notice takes it over.
    std::string baseTitle() const;

  private:
    /// The log as a sink for other components; it does nothing once the controller is gone.
    LogSink logSink() const;

    // Presentation, shared with the menus and page messages.
    void collapse(bool animate);
    void setAppearance(AppearancePref pref, bool fromPage);
    void userShutdown();
    void showCoolDownTips();
    void resizeKeepingBottom(Size contentSize, bool animate);
    void handleStageChange(bool forceSound);
    void applyHome();
    void playSoftChime();

    // Start-up.
    void chooseActuators();
    void logSensorLines();
    void buildEngine();
    void createWindow();
    void startEmergencyOrProbe();
    void presentFirstTick();
    void startTimers();

    // How often the loop ticks.
    bool needsQuickTicks(const nlohmann::json& view) const;
    void setTickRate(bool quick);
    /// Whether the shell or an outside watcher shows each live sample.
    bool showsEverySample() const;
    void tickAfterSample();

    // Bridge.
    void loadPage(const std::string& name);
    void installUserScripts();
    void pushRender(const nlohmann::json& view);
    void pushLive();
    void pushMenu();
    void dispatch(const std::string& name, const nlohmann::json& body);
    void handleSize(const nlohmann::json& body);
    void handleTheme(const nlohmann::json& body);
    void handleEmergencyPageMessage(const nlohmann::json& body);
    void runEmergencyPageAction(const std::string& action, const nlohmann::json& body);
    void cancelFromOutside();
    void handleHeat(const nlohmann::json& body);
    void runHeat(const std::string& action);
    void sendHistory(const nlohmann::json& body);
    void onUserShutdownResult(const std::optional<ShutdownError>& error);

    // Presentation.
    void enterMode(UIMode next);
    void updateChrome(const nlohmann::json& view);
    void menuTestEmergency();
    void reportStatus(const nlohmann::json& view);
    void reportLive(const LiveInputs& inputs);
    void rememberLive(const LiveInputs& inputs);
    void presentLive(const LiveInputs& inputs, std::uint64_t sequence);
    void receiveLive(const LiveDelivery& delivery);
    void logFirstSample(const std::string& summary, const LiveInputs& first) const;
    void startSampler();

    // Outside watchers.
    void startObservers();
    void notifyTicked(const nlohmann::json& view);
    void notifySampled(const LiveInputs& inputs);

    // Menu bar and appearance.
    void buildMenus();
    void setupMenuBarItem();
    void updateAppearanceMenu();
    void updateMenuBarItem(const LiveInputs& inputs);
    void setNotifyWhenHot(bool on);
    void setFigureAsText(bool on);

    /// Wraps work for the loop so that it does nothing once the controller is gone.
    std::function<void()> guarded(std::function<void(AppController&)> work);

    const LaunchOptions opts_;
    const std::string token_;
    AppearancePref appearance_;
    /// "Notify me when it gets hot" and "Temperature as text beside the icon".
    bool notifyWhenHot_ = true;
    bool figureAsText_ = false;
    PresentationState ui_;
    std::unique_ptr<HeatCollector> live_;
    /// The sampling thread, when the collector runs on one (then `live_` is empty).
    std::unique_ptr<LiveSampler> sampler_;
    std::shared_ptr<FileLogger> logger_;
    std::shared_ptr<Shutdowner> shutdowner_;
    std::shared_ptr<Sounder> sounder_;
    std::unique_ptr<Engine> engine_;
    bool startConsentSaved_ = true;
    Shell& shell_;
    MainLoop& loop_;
    AppServices services_;
    /// The quarter-second tick, while something needs it; else ticks follow the samples.
    std::optional<TimerId> pollTimer_;
    /// A calm watchdog's tick when no sample came in.
    std::optional<TimerId> idleTimer_;
    std::optional<TimerId> liveTimer_;
    std::vector<std::shared_ptr<WatchdogObserver>> observers_;
    /// The month of history the expanded page draws and the popup's sparkline shows.
    std::shared_ptr<HistoryRecorder> history_;
    /// The thresholds of the latest sample, for the metrics file; with a sampler thread the
    /// collector is not the loop's to ask.
    std::vector<ThermalLimit> sampledLimits_;
    StatusReport status_;
    std::shared_ptr<AppController*> self_ = std::make_shared<AppController*>(this);
};

}  // namespace velmora
