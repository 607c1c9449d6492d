#include <nlohmann/json.hpp>

#include <cstdint>
#include <string>

#include "engine/engine.hpp"
#include "policy/constants.hpp"

// What others read of the engine: the stage page's dictionary and the snapshot. When a
// rehearsal runs the dictionary describes the rehearsal, so the page shows it with the real
// screens.
namespace velmora {

nlohmann::json Engine::view(MonoTime now) const {
    const Countdown& m = shown();
    const bool leadIn = sim_ && sim_->state() == CountdownState::idle &&
                        now - simStart_ < watchdog::simulationLeadIn;
    nlohmann::json v = {
        {"version", std::string(watchdog::version)},
        {"state", std::string(rawValue(m.state()))},
        {"remainingMs", m.remainingMs(now)},
        {"remaining", m.remaining(now)},
        {"totalSecs", watchdog::countdownLength.count()},
        {"sim", sim_.has_value()},
        {"simDone", sim_ && sim_->state() == CountdownState::done},
        {"lead", leadIn},
        {"autoShutdown", settingsInForce_.autoShutdown},
        {"consentNeeded", !settingsInForce_.consentRecorded},
        {"temp", thermalWord()},
        {"level", sim_ ? rawValue(Level::blowout) : (level_ ? rawValue(*level_) : -1)},
        {"stage", sim_ ? std::string(label(Level::blowout))
                       : (level_ ? std::string(label(*level_)) : std::string("n/a"))},
        {"nowTxt", nowText()},
        {"err", errorMessage_},
        {"graceSecs", static_cast<std::int64_t>(m.graceLeft(now).count())},
        {"autoEnabled", settingsInForce_.enabled()},
        {"permState", permissionName()},
        {"permMsg", permissionText()},
        {"permDismissed", permissionDismissed_},
        {"thermalNote", std::string(words_.thermalNote)},
    };
    if (manual_) v["manual"] = {{"reason", manual_->reason}, {"perm", manual_->permission}};
    if (relief_ && !sim_) {
        const std::string peakWord =
            relief_->peakC > 0 ? std::string(stateName(band(relief_->peakC))) : "n/a";
        v["relief"] = {{"peak", peakWord}, {"cancelled", relief_->cancelled}};
    }
    return v;
}

std::string Engine::viewJson(MonoTime now) const {
    return view(now).dump();
}

Engine::Snapshot Engine::snapshot() const {
    return Snapshot{
        .real = real_,
        .sim = sim_,
        .simStart = simStart_,
        .settingsInForce = settingsInForce_,
        .relief = relief_,
        .reliefHoldUntil = reliefHoldUntil_,
        .manual = manual_,
        .permission = permission_,
        .permissionDismissed = permissionDismissed_,
        .probing = probing_,
        .peak = peak_,
        .level = level_,
        .tempC = tempC_,
        .errorMessage = errorMessage_,
        .shutdownCalls = shutdownCalls_,
        .firedAt = firedAt_,
        .lastEmergencyAlarm = lastEmergencyAlarm_,
        .lastNow = lastNow_,
    };
}

std::string Engine::thermalWord() const {
    if (sim_) return "Critical (simulated)";
    // While the countdown runs on a cooling machine, keep naming the peak that started it.
    if (tempC_ && realRunning() && *tempC_ < peak_) return std::string(stateName(band(peak_)));
    return level_ ? std::string(stateName(*level_)) : "n/a";
}

std::string Engine::nowText() const {
    if (!tempC_ || !level_) return "n/a";
    return std::string(stateName(*level_)) + " · " + std::string(label(*level_));
}

std::string Engine::permissionName() const {
    switch (permission_.kind) {
        case PermissionState::Kind::denied:
            return "denied";
        case PermissionState::Kind::failed:
            return "failed";
        case PermissionState::Kind::unknown:
            return "unknown";
        case PermissionState::Kind::granted:
            return "granted";
    }
    return "unknown";
}

std::string Engine::permissionText() const {
    switch (permission_.kind) {
        case PermissionState::Kind::denied:
            return std::string(words_.permissionMessage);
        case PermissionState::Kind::failed:
            return std::string(words_.permissionCheckFailedPrefix) + permission_.detail;
        case PermissionState::Kind::unknown:
        case PermissionState::Kind::granted:
            return "";
    }
    return "";
}

}  // namespace velmora
