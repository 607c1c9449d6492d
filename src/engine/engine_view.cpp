#include <nlohmann/json.hpp>

#include <cstdint>
#include <string>

#include "engine/engine.hpp"
#include "policy/constants.hpp"

// The stage page's dictionary. When a rehearsal runs it describes the rehearsal, so the page
// shows it with the real screens.
namespace velmora {

nlohmann::json Engine::view(MonoTime now) const {
    const Countdown& m = shown();
    const bool leadIn =
        sim && sim->state == CountdownState::idle && now - simStart < watchdog::simulationLeadIn;
    nlohmann::json v = {
        {"version", std::string(watchdog::version)},
        {"state", std::string(rawValue(m.state))},
        {"remainingMs", m.remainingMs(now)},
        {"remaining", m.remaining(now)},
        {"totalSecs", watchdog::countdownLength.count()},
        {"sim", sim.has_value()},
        {"simDone", sim && sim->state == CountdownState::done},
        {"lead", leadIn},
        {"autoShutdown", settingsInForce.autoShutdown},
        {"consentNeeded", !settingsInForce.consentRecorded},
        {"temp", thermalWord()},
        {"level", sim ? rawValue(Level::blowout) : (level ? rawValue(*level) : -1)},
        {"stage", sim ? std::string(label(Level::blowout))
                      : (level ? std::string(label(*level)) : std::string("n/a"))},
        {"nowTxt", nowText()},
        {"err", errorMessage},
        {"graceSecs", static_cast<std::int64_t>(m.graceLeft(now).count())},
        {"autoEnabled", settingsInForce.enabled()},
        {"permState", permissionName()},
        {"permMsg", permissionText()},
        {"permDismissed", permissionDismissed},
        {"thermalNote", std::string(words_.thermalNote)},
    };
    if (manual) v["manual"] = {{"reason", manual->reason}, {"perm", manual->permission}};
    if (relief && !sim) {
        const std::string peakWord =
            relief->peakC > 0 ? std::string(stateName(band(relief->peakC))) : "n/a";
        v["relief"] = {{"peak", peakWord}, {"cancelled", relief->cancelled}};
    }
    return v;
}

std::string Engine::viewJson(MonoTime now) const {
    return view(now).dump();
}

std::string Engine::thermalWord() const {
    if (sim) return "Critical (simulated)";
    // While the countdown runs on a cooling machine, keep naming the peak that started it.
    if (tempC && realRunning() && *tempC < peak) return std::string(stateName(band(peak)));
    return level ? std::string(stateName(*level)) : "n/a";
}

std::string Engine::nowText() const {
    if (!tempC || !level) return "n/a";
    return std::string(stateName(*level)) + " · " + std::string(label(*level));
}

std::string Engine::permissionName() const {
    switch (permission.kind) {
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
    switch (permission.kind) {
        case PermissionState::Kind::denied:
            return std::string(words_.permissionMessage);
        case PermissionState::Kind::failed:
            return std::string(words_.permissionCheckFailedPrefix) + permission.detail;
        case PermissionState::Kind::unknown:
        case PermissionState::Kind::granted:
            return "";
    }
    return "";
}

}  // namespace velmora
