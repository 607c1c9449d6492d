#include "engine/engine.hpp"

#include <nlohmann/json.hpp>

#include <chrono>
#include <utility>

#include "engine/engine_text.hpp"
#include "policy/constants.hpp"

namespace velmora {

using engine_text::boolText;
using engine_text::integerPart;

namespace {

std::string thresholdsLine(const Alerter& alerter, const PlatformTexts& words) {
    const std::string promotion =
        alerter.promotesSustainedExtreme() ? "ON" : "OFF: only the OS critical state reaches B";
    return "stage-c: thresholds: stageA=" + integerPart(watchdog::extremeC) +
           "C stageB=" + integerPart(watchdog::criticalC) +
           "C (countdown starts immediately at B; timed A->B promotion " + promotion +
           ") countdown=" + integerPart(watchdog::countdownLength) +
           "s grace=" + integerPart(watchdog::graceLength) +
           "s; shutdown runs at the END of the countdown (" + std::string(words.shutdownMechanism) +
           ")";
}

// How often a running countdown is written to the log.
constexpr std::chrono::seconds kCountdownLogInterval{5};

// Without a cache from the owner: the file as it is now, read once.
std::shared_ptr<SettingsCache> readOnceCache(const SettingsStore& store) {
    auto cache = std::make_shared<SettingsCache>(store);
    cache->refresh();
    return cache;
}

std::string settingsText(const Settings& settings) {
    return "autoShutdown=" + boolText(settings.autoShutdown) +
           " consentRecorded=" + boolText(settings.consentRecorded);
}

}  // namespace

Engine::Engine(Parts parts, MonoTime now)
    : sensor_(std::move(parts.sensor)),
      settings_(std::move(parts.settings)),
      settingsCache_(parts.settingsCache ? std::move(parts.settingsCache)
                                         : readOnceCache(settings_)),
      markers_(std::move(parts.markers)),
      markerJobs_(markers_),
      shutdowner_(std::move(parts.shutdowner)),
      sounder_(std::move(parts.sounder)),
      log_(std::move(parts.log)),
      alerter_(parts.alerter),
      lastNow_(now),
      words_(*parts.platformTexts),
      wallClock_(parts.wallClock ? std::move(parts.wallClock) : &Timestamp::now) {
    logStart();
}

void Engine::logStart() {
    const auto snapshot = settingsCache_->snapshot();
    settingsInForce_ = snapshot.settings;
    settingsVersion_ = snapshot.version;
    emit("stage-c: settings loaded: " + settingsText(settingsInForce_) +
         " enabled=" + boolText(settingsInForce_.enabled()));
    if (!snapshot.loaded) {
        emit(
            "stage-c: the settings file is slow to read; no automatic shutdown until it has "
            "been read");
    }
    noteSettingsProblem(snapshot.problem);
    emit(thresholdsLine(alerter_, words_));
    const auto found = markers_.inspect();
    if (!found.marker && found.problem.empty()) return;
    markers_.clear();
    if (!found.marker) {
        // Not one this program wrote: a relief screen with empty fields would tell the user of
        // a shutdown that never happened.
        emit("stage-c: marker found at launch but not usable (" + markers_.url().string() + " " +
             found.problem + "); no relief shown; marker cleared");
        return;
    }
    const auto& marker = found.marker;
    relief_ = Relief{marker->peakC, false};
    emit("stage-c: marker found at launch (shutdown at " + marker->at + ", peak ladder " +
         integerPart(marker->peakC) + "); showing relief; marker cleared");
    reliefHoldUntil_ = lastNow_ + watchdog::reliefHold;
    emit("stage-c: no countdown for the next " + integerPart(watchdog::reliefHold) +
         "s after the shutdown (time to read the notice and turn automatic shutdown off)");
}

bool Engine::reliefHolds(MonoTime now) {
    if (!reliefHoldUntil_) return false;
    if (now < *reliefHoldUntil_) return true;
    reliefHoldUntil_.reset();
    emit("stage-c: relief hold over; countdowns allowed again");
    return false;
}

nlohmann::json Engine::tick(MonoTime now) {
    lastNow_ = now;
    tempC_ = sensor_ ? sensor_->readC() : std::nullopt;
    level_ = alerter_.update(tempC_, now);
    followSettings();  // from memory: the file is read off this thread when it changes
    reportLateMarker();
    const bool critical = level_ == Level::blowout;
    const bool enabled = settingsInForce_.enabled() && !reliefHolds(now);
    const bool calm = level_.has_value() && *level_ <= Level::warm;
    if (!critical && manual_ && !realRunning()) {
        emit("stage-c: manual-shutdown notice cleared (no longer critical)");
        manual_.reset();
    }
    if (critical && tempC_ && *tempC_ > peak_) peak_ = *tempC_;
    if (!critical && real_.state() == CountdownState::idle) peak_ = 0;
    for (const CountdownEvent& event : real_.step(now, CountdownInput{critical, calm, enabled})) {
        handle(event, now, false);
    }
    soundEmergencyAlarm(now);
    logStateChange(now, critical, enabled);
    checkFailsafe(now);
    stepSimulation(now);
    return view(now);
}

void Engine::followSettings() {
    if (settingsCache_->version() == settingsVersion_) return;
    const auto snapshot = settingsCache_->snapshot();
    settingsVersion_ = snapshot.version;
    if (snapshot.settings != settingsInForce_) {
        settingsInForce_ = snapshot.settings;
        emit("stage-c: settings changed: " + settingsText(settingsInForce_) +
             " enabled=" + boolText(settingsInForce_.enabled()));
    }
    noteSettingsProblem(snapshot.problem);
}

// Once per problem, not once per read: the settings in force do not change meanwhile.
void Engine::noteSettingsProblem(const std::optional<std::string>& problem) {
    if (problem == settingsProblem_) return;
    if (problem) {
        emit("stage-c: settings file " + settings_.url().string() + " " + *problem + "; keeping " +
             settingsText(settingsInForce_));
    } else {
        emit("stage-c: settings file readable again");
    }
    settingsProblem_ = problem;
}

void Engine::soundEmergencyAlarm(MonoTime now) {
    const bool simCounting = sim_ && sim_->state() == CountdownState::countdown;
    if (level_ != Level::blowout || realRunning() || simCounting) return;
    const bool alarmedRecently =
        lastEmergencyAlarm_ && now - *lastEmergencyAlarm_ < watchdog::emergencyAlarmInterval;
    if (alarmedRecently) return;
    lastEmergencyAlarm_ = now;
    sounder_->alarm();
}

void Engine::logStateChange(MonoTime now, bool critical, bool enabled) {
    if (real_.state() != lastLoggedState_) {
        emit("stage-c: state " + std::string(rawValue(lastLoggedState_)) + " -> " +
             std::string(rawValue(real_.state())) + " (thermal=" +
             (level_ ? std::string(stateName(*level_)) : "n/a") + " ladder=" + integerPart(tempC_) +
             " level=" + (level_ ? std::string(label(*level_)) : "n/a") +
             " critical=" + boolText(critical) + " enabled=" + boolText(enabled) + ")");
        lastLoggedState_ = real_.state();
        return;
    }
    if (real_.state() == CountdownState::countdown && now - lastLog_ >= kCountdownLogInterval) {
        lastLog_ = now;
        emit("stage-c: countdown remaining=" + std::to_string(real_.remaining(now)) +
             "s peak ladder=" + integerPart(peak_));
    }
}

void Engine::checkFailsafe(MonoTime now) {
    if (real_.state() != CountdownState::fired || !firedAt_) return;
    if (now - *firedAt_ < watchdog::failsafeDelay) return;
    emit("stage-c: still running " + integerPart(watchdog::failsafeDelay) +
         "s after the shutdown call; assuming the shutdown did not happen; clearing marker");
    markerJobs_.clear();
    real_.reset();  // idle, no previous step, no pending cancel; deadlines are left
    firedAt_.reset();
}

void Engine::stepSimulation(MonoTime now) {
    if (!sim_) return;
    if (realRunning()) {
        emit("stage-c: SIMULATION stopped: real countdown took over");
        sim_.reset();
        return;
    }
    if (now - simStart_ < watchdog::simulationLeadIn) return;
    for (const CountdownEvent& event : sim_->step(now, CountdownInput{true, false, true})) {
        handle(event, now, true);
    }
}

void Engine::emit(const std::string& line) const {
    if (log_) log_(line);
}

}  // namespace velmora
