#include <nlohmann/json.hpp>

#include <algorithm>
#include <chrono>
#include <cmath>

#include "actuators/mute_sounder.hpp"
#include "app/app_controller.hpp"
#include "app/bridge_scripts.hpp"
#include "app/file_preferences.hpp"
#include "app/token.hpp"
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
    : opts(std::move(options)),
      token(services.token.empty() ? makeLaunchToken() : services.token),
      appearance(AppearancePref::autoTheme),
      live(std::move(services.collector)),
      shell_(shell),
      loop_(loop),
      services_(std::move(services)) {
    if (!services_.preferences) services_.preferences = std::make_unique<MemoryPreferences>();
    appearance = loadAppearance(*services_.preferences);
    if (live) live->forcedThermal = opts.forceThermal;
}

AppController::~AppController() {
    for (const auto timer : {pollTimer_, idleTimer_, liveTimer_, ui.emergencyRepeatTimer}) {
        if (timer) loop_.stop(*timer);
    }
}

void AppController::start() {
    logger = std::make_shared<FileLogger>(opts.dataDir);
    if (services_.logMirror) logger->setMirror(services_.logMirror);
    if (services_.connectLog) services_.connectLog(logSink());
    log("---- " + std::string(watchdog::appName) + " " + std::string(watchdog::version) +
        " launched (live readings; testEmergency=" + boolText(opts.testEmergency) +
        " dryRun=" + boolText(opts.dryRun) + " mute=" + boolText(opts.mute) +
        " dataDir=" + opts.dataDir.string() + ")");
    chooseActuators();
    startObservers();
    logSensorLines();
    buildEngine();
    createWindow();
    if (!opts.noMenuItem) setupMenuBarItem();
    startEmergencyOrProbe();
    shell_.showMainWindow(compactSize);
    presentFirstTick();
    startTimers();
}

void AppController::chooseActuators() {
    if (opts.dryRun) {
        shutdowner = std::make_shared<DryRunShutdowner>(
            logSink(), DryRunOptions{opts.simulateDenied, opts.realProbe}, loop_.poster(),
            services_.realProbe);
    } else if (services_.realShutdowner) {
        shutdowner = services_.realShutdowner(logSink(), loop_.poster());
    } else {
        // A build without a shutdown mechanism must still never pretend to have one.
        log("shutdown: no shutdown mechanism on this platform; every shutdown is a dry run");
        shutdowner = std::make_shared<DryRunShutdowner>(logSink(), DryRunOptions{}, loop_.poster(),
                                                        services_.realProbe);
    }
    sounder = opts.mute || !services_.systemSounder ? std::make_shared<MuteSounder>(logSink())
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
    const auto summary = live->sensorSummary();
    // The first sample also tells whether a battery temperature can be read; sampling logs
    // nothing, so the line still comes first in the log.
    const auto first = live->sample(loop_.wallNow());
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
    sampler = std::make_unique<LiveSampler>(
        services_.makeCollector, loop_.poster(),
        [weak](const LiveDelivery& delivery) {
            if (const auto self = weak.lock()) (*self)->receiveLive(delivery);
        },
        logSink());
    constexpr std::chrono::milliseconds firstSampleWait{1500};
    if (const auto first = sampler->awaitFirst(firstSampleWait)) {
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
    auto* collector = live.get();
    auto* background = sampler.get();
    auto& loop = loop_;
    auto sensor = std::make_shared<ThermalSensor>([collector, background, &loop] {
        return background != nullptr ? background->currentThermal(loop.now())
                                     : collector->currentThermal(loop.wallNow());
    });
    // The settings are read in the background from now on; a stalled first read must not keep
    // the watchdog from starting.
    auto settingsCache = std::make_shared<SettingsCache>(SettingsStore(opts.dataDir, logSink()));
    settingsCache->startWatching(kFirstSettingsReadWait);
    Engine::Parts parts{
        .sensor = std::move(sensor),
        .settings = SettingsStore(opts.dataDir, logSink()),
        .markers = MarkerStore(opts.dataDir),
        .shutdowner = shutdowner,
        .sounder = sounder,
        .alerter = Alerter(false),
        .log = logSink(),
        .platformTexts = &texts(),
        .settingsCache = std::move(settingsCache),
    };
    parts.wallClock = [&loop] { return loop.wallNow(); };
    engine = std::make_unique<Engine>(std::move(parts), loop_.now());
    if (opts.consent) startConsentSaved = engine->consent(*opts.consent, loop_.wallNow());
}

void AppController::createWindow() {
    shell_.createMainWindow(baseTitle(), compactSize);
    installUserScripts();
    buildMenus();
}

void AppController::startEmergencyOrProbe() {
    if (opts.testEmergency) {
        engine->startSim(loop_.now());
    } else if (engine->settingsInForce.enabled()) {
        engine->probePermission("launch", false);
    }
}

void AppController::presentFirstTick() {
    const auto view = engine->tick(loop_.now());
    ui.liveStage = liveStageOf(view);
    const auto first = pickMode(view, ui.wantSettings);
    // The log tells the first page as it tells every later change.
    if (first != ui.mode) {
        log("ui: mode " + std::string(modeName(ui.mode)) + " -> " + std::string(modeName(first)));
    }
    ui.mode = first;
    handleStageChange(false);
    if (ui.mode != UIMode::home) {
        loadPage("stagec");
        resizeKeepingBottom(expandedSize, false);
    }
    updateChrome(view);
    reportStatus(view);
    setTickRate(needsQuickTicks(view));
}

void AppController::startTimers() {
    if (sampler) {
        // The sampler keeps its own time, so that a calm loop wakes once a second, for the
        // sample, instead of once to ask for it and once more to receive it; when nobody
        // shows each sample, once in two seconds.
        sampler->sampleEvery(HeatCollector::interval);
        if (!showsEverySample()) sampler->postEvery(2);
        sampler->request();  // the first sample to show comes at once, not on the next second
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
    if (logger) logger->log(line);
}

LogSink AppController::logSink() const {
    std::weak_ptr<FileLogger> weak = logger;
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
    return std::string(watchdog::appName) + (opts.dryRun ? " · TEST MODE" : "");
}

}  // namespace velmora
