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
        alerter.promoteSustainedExtreme ? "ON" : "OFF: only the OS critical state reaches B";
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
    : sensor(std::move(parts.sensor)),
      settings(std::move(parts.settings)),
      settingsCache(parts.settingsCache ? std::move(parts.settingsCache) : readOnceCache(settings)),
      markers(std::move(parts.markers)),
      markerJobs(markers),
      shutdowner(std::move(parts.shutdowner)),
      sounder(std::move(parts.sounder)),
      log(std::move(parts.log)),
      alerter(parts.alerter),
      lastNow(now),
      words_(*parts.platformTexts),
      wallClock_(parts.wallClock ? std::move(parts.wallClock) : &Timestamp::now) {
    logStart();
}

void Engine::logStart() {
    const auto snapshot = settingsCache->snapshot();
    settingsInForce = snapshot.settings;
    settingsVersion_ = snapshot.version;
    emit("stage-c: settings loaded: " + settingsText(settingsInForce) +
         " enabled=" + boolText(settingsInForce.enabled()));
    if (!snapshot.loaded) {
        emit(
            "stage-c: the settings file is slow to read; no automatic shutdown until it has "
            "been read");
    }
    noteSettingsProblem(snapshot.problem);
    emit(thresholdsLine(alerter, words_));
    const auto found = markers.inspect();
    if (!found.marker && found.problem.empty()) return;
    markers.clear();
    if (!found.marker) {
        // Not one this program wrote: a relief screen with empty fields would tell the user of
        // a shutdown that never happened.
        emit("stage-c: marker found at launch but not usable (" + markers.url().string() + " " +
             found.problem + "); no relief shown; marker cleared");
        return;
    }
    const auto& marker = found.marker;
    relief = Relief{marker->peakC, false};
    emit("stage-c: marker found at launch (shutdown at " + marker->at + ", peak ladder " +
         integerPart(marker->peakC) + "); showing relief; marker cleared");
    reliefHoldUntil = lastNow + watchdog::reliefHold;
    emit("stage-c: no countdown for the next " + integerPart(watchdog::reliefHold) +
         "s after the shutdown (time to read the notice and turn automatic shutdown off)");
}

bool Engine::reliefHolds(MonoTime now) {
    if (!reliefHoldUntil) return false;
    if (now < *reliefHoldUntil) return true;
    reliefHoldUntil.reset();
    emit("stage-c: relief hold over; countdowns allowed again");
    return false;
}

nlohmann::json Engine::tick(MonoTime now) {
    lastNow = now;
    tempC = sensor ? sensor->readC() : std::nullopt;
    level = alerter.update(tempC, now);
    followSettings();  // from memory: the file is read off this thread when it changes
    reportLateMarker();
    const bool critical = level == Level::blowout;
    const bool enabled = settingsInForce.enabled() && !reliefHolds(now);
    const bool calm = level.has_value() && *level <= Level::warm;
    if (!critical && manual && !realRunning()) {
        emit("stage-c: manual-shutdown notice cleared (no longer critical)");
        manual.reset();
    }
    if (critical && tempC && *tempC > peak) peak = *tempC;
    if (!critical && real.state == CountdownState::idle) peak = 0;
    for (const CountdownEvent& event : real.step(now, CountdownInput{critical, calm, enabled})) {
        handle(event, now, false);
    }
    soundEmergencyAlarm(now);
    logStateChange(now, critical, enabled);
    checkFailsafe(now);
    stepSimulation(now);
    return view(now);
}

void Engine::followSettings() {
    if (settingsCache->version() == settingsVersion_) return;
    const auto snapshot = settingsCache->snapshot();
    settingsVersion_ = snapshot.version;
    if (snapshot.settings != settingsInForce) {
        settingsInForce = snapshot.settings;
        emit("stage-c: settings changed: " + settingsText(settingsInForce) +
             " enabled=" + boolText(settingsInForce.enabled()));
    }
    noteSettingsProblem(snapshot.problem);
}

// Once per problem, not once per read: the settings in force do not change meanwhile.
void Engine::noteSettingsProblem(const std::optional<std::string>& problem) {
    if (problem == settingsProblem_) return;
    if (problem) {
        emit("stage-c: settings file " + settings.url().string() + " " + *problem + "; keeping " +
             settingsText(settingsInForce));
    } else {
        emit("stage-c: settings file readable again");
    }
    settingsProblem_ = problem;
}

void Engine::soundEmergencyAlarm(MonoTime now) {
    const bool simCounting = sim && sim->state == CountdownState::countdown;
    if (level != Level::blowout || realRunning() || simCounting) return;
    const bool alarmedRecently =
        lastEmergencyAlarm && now - *lastEmergencyAlarm < watchdog::emergencyAlarmInterval;
    if (alarmedRecently) return;
    lastEmergencyAlarm = now;
    sounder->alarm();
}

void Engine::logStateChange(MonoTime now, bool critical, bool enabled) {
    if (real.state != lastLoggedState) {
        emit("stage-c: state " + std::string(rawValue(lastLoggedState)) + " -> " +
             std::string(rawValue(real.state)) + " (thermal=" +
             (level ? std::string(stateName(*level)) : "n/a") + " ladder=" + integerPart(tempC) +
             " level=" + (level ? std::string(label(*level)) : "n/a") +
             " critical=" + boolText(critical) + " enabled=" + boolText(enabled) + ")");
        lastLoggedState = real.state;
        return;
    }
    if (real.state == CountdownState::countdown && now - lastLog >= kCountdownLogInterval) {
        lastLog = now;
        emit("stage-c: countdown remaining=" + std::to_string(real.remaining(now)) +
             "s peak ladder=" + integerPart(peak));
    }
}

void Engine::checkFailsafe(MonoTime now) {
    if (real.state != CountdownState::fired || !firedAt) return;
    if (now - *firedAt < watchdog::failsafeDelay) return;
    emit("stage-c: still running " + integerPart(watchdog::failsafeDelay) +
         "s after the shutdown call; assuming the shutdown did not happen; clearing marker");
    markerJobs.clear();
    real.reset();  // idle, no previous step, no pending cancel; deadlines are left
    firedAt.reset();
}

void Engine::stepSimulation(MonoTime now) {
    if (!sim) return;
    if (realRunning()) {
        emit("stage-c: SIMULATION stopped: real countdown took over");
        sim.reset();
        return;
    }
    if (now - simStart < watchdog::simulationLeadIn) return;
    for (const CountdownEvent& event : sim->step(now, CountdownInput{true, false, true})) {
        handle(event, now, true);
    }
}

void Engine::emit(const std::string& line) const {
    if (log) log(line);
}

}  // namespace velmora
