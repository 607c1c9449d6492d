#include <nlohmann/json.hpp>

#include <algorithm>
#include <chrono>
#include <cmath>

#include "actuators/mute_sounder.hpp"
#include "app/controller/app_controller.hpp"
#include "app/core/bridge_scripts.hpp"
#include "app/core/file_preferences.hpp"
#include "app/core/notify_preference.hpp"
#include "app/core/token.hpp"
#include "engine/engine_text.hpp"
#include "policy/constants.hpp"
#include "policy/platform_texts.hpp"

namespace velmora {

using engine_text::boolText;

namespace {

// How long start-up waits for the first read of the settings file.
constexpr std::chrono::seconds kFirstSettingsReadWait{1};

}  // namespace

AppController::AppController(LaunchOptions options, Shell& shell, MainLoop& loop,
                             AppServices services)
    : opts_(std::move(options)),
      token_(services.token.empty() ? makeLaunchToken() : services.token),
      appearance_(AppearancePref::autoTheme),
      live_(std::move(services.collector)),
      shell_(shell),
      loop_(loop),
      services_(std::move(services)) {
    if (!services_.preferences) services_.preferences = std::make_unique<MemoryPreferences>();
    appearance_ = loadAppearance(*services_.preferences);
    notifyWhenHot_ = loadNotifyWhenHot(*services_.preferences);
    figureAsText_ = services_.preferences->text(figureAsTextKey) == "on";
    if (live_) live_->forcedThermal = opts_.forceThermal;
}

AppController::~AppController() {
    for (const auto timer : {pollTimer_, idleTimer_, liveTimer_}) {
        if (timer) loop_.stop(*timer);
    }
}

void AppController::start() {
    logger_ = std::make_shared<FileLogger>(opts_.dataDir);
    if (services_.logMirror) logger_->setMirror(services_.logMirror);
    if (services_.connectLog) services_.connectLog(logSink());
    log("---- " + std::string(watchdog::appName) + " " + std::string(watchdog::version) +
        " launched (live readings; testEmergency=" + boolText(opts_.testEmergency) +
        " dryRun=" + boolText(opts_.dryRun) + " mute=" + boolText(opts_.mute) +
        " dataDir=" + opts_.dataDir.string() + ")");
    chooseActuators();
    startObservers();
    logSensorLines();
    buildEngine();
    if (services_.connectCountdownCancel) {
        services_.connectCountdownCancel(
            guarded([](AppController& app) { app.cancelFromOutside(); }));
    }
    createWindow();
    if (!opts_.noMenuItem) setupMenuBarItem();
    startEmergencyOrProbe();
    shell_.showMainWindow(compactSize);
    presentFirstTick();
    startTimers();
}

void AppController::chooseActuators() {
    if (opts_.dryRun) {
        shutdowner_ = std::make_shared<DryRunShutdowner>(
            logSink(), DryRunOptions{opts_.simulateDenied, opts_.realProbe}, loop_.poster(),
            services_.realProbe);
    } else if (services_.realShutdowner) {
        shutdowner_ = services_.realShutdowner(logSink(), loop_.poster());
    } else {
        // A build without a shutdown mechanism must still never pretend to have one.
        log("shutdown: no shutdown mechanism on this platform; every shutdown is a dry run");
        shutdowner_ = std::make_shared<DryRunShutdowner>(logSink(), DryRunOptions{}, loop_.poster(),
                                                         services_.realProbe);
    }
    sounder_ = opts_.mute || !services_.systemSounder ? std::make_shared<MuteSounder>(logSink())
                                                      : services_.systemSounder();
}

void AppController::logSensorLines() {
    log("stage-c sensor: LIVE collector snapshot (" + std::string(texts().thermalSource) +
        ", 1 s); ladder map nominal=NORMAL fair=WARM serious=EXTREME HEAT (Stage A, warning "
        "only) critical=EMERGENCY (Stage B/C). " +
        std::string(texts().thermalNote));
    if (services_.makeCollector) {
        startSampler();
        return;
    }
    const auto summary = live_->sensorSummary();
    // The first sample also tells whether a battery temperature can be read; sampling logs
    // nothing, so the line still comes first in the log.
    const auto first = live_->sample(loop_.wallNow());
    rememberLive(first);
    logFirstSample(summary, first);
}

void AppController::logFirstSample(const std::string& summary, const LiveInputs& first) const {
    log("live: " + summary + "; battery temp " +
        (first.batteryTemp ? "available" : "not available"));
}

// The first sample is waited for briefly, so that the first tick already knows the thermal
// state; when discovery takes longer it arrives through the loop like every other sample.
void AppController::startSampler() {
    std::weak_ptr<AppController*> weak = self_;
    sampler_ = std::make_unique<LiveSampler>(
        services_.makeCollector, loop_.poster(),
        [weak](const LiveDelivery& delivery) {
            if (const auto self = weak.lock()) (*self)->receiveLive(delivery);
        },
        logSink());
    constexpr std::chrono::milliseconds firstSampleWait{1500};
    if (const auto first = sampler_->awaitFirst(firstSampleWait)) {
        rememberLive(first->inputs);
        logFirstSample(first->summary, first->inputs);
        for (const std::string& notice : first->notices)
            log(notice);
        sampledLimits_ = first->limits;
    } else {
        log("live: the first sample is late; the thermal state is unknown until it comes");
    }
}

void AppController::buildEngine() {
    auto* collector = live_.get();
    auto* background = sampler_.get();
    auto& loop = loop_;
    auto sensor = std::make_shared<ThermalSensor>([collector, background, &loop] {
        return background != nullptr ? background->currentThermal(loop.now())
                                     : collector->currentThermal(loop.wallNow());
    });
    // The settings are read in the background from now on; a stalled first read must not keep
    // the watchdog from starting.
    auto settingsCache = std::make_shared<SettingsCache>(SettingsStore(opts_.dataDir, logSink()));
    settingsCache->startWatching(kFirstSettingsReadWait);
    Engine::Parts parts{
        .sensor = std::move(sensor),
        .settings = SettingsStore(opts_.dataDir, logSink()),
        .markers = MarkerStore(opts_.dataDir),
        .shutdowner = shutdowner_,
        .sounder = sounder_,
        .alerter = Alerter(false),
        .log = logSink(),
        .platformTexts = &texts(),
        .settingsCache = std::move(settingsCache),
    };
    parts.wallClock = [&loop] { return loop.wallNow(); };
    engine_ = std::make_unique<Engine>(std::move(parts), loop_.now());
    if (opts_.consent) startConsentSaved_ = engine_->consent(*opts_.consent, loop_.wallNow());
}

void AppController::createWindow() {
    shell_.createMainWindow(baseTitle(), compactSize);
    installUserScripts();
    buildMenus();
}

void AppController::startEmergencyOrProbe() {
    if (opts_.testEmergency) {
        engine_->startSim(loop_.now());
    } else if (engine_->settingsInForce().enabled()) {
        engine_->probePermission("launch", false);
    }
}

void AppController::presentFirstTick() {
    const auto view = engine_->tick(loop_.now());
    ui_.liveStage = liveStageOf(view);
    const auto first = pickMode(view, ui_.wantSettings);
    // The log tells the first page as it tells every later change.
    if (first != ui_.mode) {
        log("ui: mode " + std::string(modeName(ui_.mode)) + " -> " + std::string(modeName(first)));
    }
    ui_.mode = first;
    handleStageChange(false);
    if (ui_.mode != UIMode::home) {
        loadPage("stagec");
        resizeKeepingBottom(expandedSize, false);
    }
    updateChrome(view);
    reportStatus(view);
    setTickRate(needsQuickTicks(view));
}

void AppController::startTimers() {
    if (sampler_) {
        // The sampler keeps its own time, so that a calm loop wakes once a second, for the
        // sample, instead of once to ask for it and once more to receive it; when nobody
        // shows each sample, once in two seconds.
        sampler_->sampleEvery(HeatCollector::interval);
        if (!showsEverySample()) sampler_->postEvery(2);
        sampler_->request();  // the first sample to show comes at once, not on the next second
        return;
    }
    sampleLive();
    liveTimer_ = loop_.startRepeating(HeatCollector::interval,
                                      guarded([](AppController& app) { app.sampleLive(); }));
}

bool AppController::showsEverySample() const {
    return shell_.showsEverySample() ||
           std::any_of(observers_.begin(), observers_.end(),
                       [](const auto& observer) { return observer->followsEverySample(); });
}

void AppController::willTerminate() const {
    log("---- quit");
}

void AppController::windowClosed() {
    log("ui: main window closed");
    shell_.terminate();
}

void AppController::log(const std::string& line) const {
    if (logger_) logger_->log(line);
}

void AppController::drainLog() const {
    if (logger_) logger_->drain();
}

LogSink AppController::logSink() const {
    std::weak_ptr<FileLogger> weak = logger_;
    return [weak](const std::string& line) {
        if (const auto target = weak.lock()) target->log(line);
    };
}

std::function<void()> AppController::guarded(std::function<void(AppController&)> work) {
    std::weak_ptr<AppController*> weak = self_;
    return [weak, work = std::move(work)] {
        if (const auto self = weak.lock()) work(**self);
    };
}

std::string AppController::baseTitle() const {
    return std::string(watchdog::appName) + (opts_.dryRun ? " · TEST MODE" : "");
}

}  // namespace velmora
