#pragma once

#include <cstdint>
#include <functional>
#include <future>
#include <memory>
#include <optional>
#include <string>

#include <nlohmann/json_fwd.hpp>

#include "actuators/shutdowner.hpp"
#include "actuators/sounder.hpp"
#include "policy/alerter.hpp"
#include "policy/countdown.hpp"
#include "policy/mono_time.hpp"
#include "policy/platform_texts.hpp"
#include "policy/sinks.hpp"
#include "policy/temp_sensor.hpp"
#include "policy/timestamp.hpp"
#include "store/marker_queue.hpp"
#include "store/marker_store.hpp"
#include "store/settings_cache.hpp"
#include "store/settings_store.hpp"

namespace velmora {

/// The watchdog's heart. Four times a second `tick` reads the temperature, updates the stage
/// level, runs the real countdown and any simulation, performs the effects of their events
/// (sounds, marker, shutdown call), and returns the stage page's view. Everything runs on the
/// owner's main thread; the shutdowner delivers its completions there too, so there are no locks.
/// A tick never waits on the disk: the settings come from an in-memory cache, and the marker is
/// written and removed on a thread of its own.
///
/// The data members are public so that the presentation and tests can read them; only the
/// engine itself changes them.
class Engine {
  public:
    /// What is known of the permission to shut the machine down.
    struct PermissionState {
        enum class Kind { denied, failed, unknown, granted };
        Kind kind = Kind::unknown;
        std::string detail;  // only `denied` and `failed` carry one

        static PermissionState denied(std::string detail) {
            return {Kind::denied, std::move(detail)};
        }
        static PermissionState failed(std::string detail) {
            return {Kind::failed, std::move(detail)};
        }
        static PermissionState unknown() { return {Kind::unknown, {}}; }
        static PermissionState granted() { return {Kind::granted, {}}; }
        bool operator==(const PermissionState&) const = default;
    };

    /// The "shut down manually" notice after a failed shutdown.
    struct ManualFail {
        std::string reason;       // shown to the user
        bool permission = false;  // the failure was the missing permission
        bool operator==(const ManualFail&) const = default;
    };

    /// What the engine is built from. The sensor, shutdowner and sounder are shared with the
    /// owner, which may keep them too; the stores only hold their file locations.
    struct Parts {
        std::shared_ptr<TempSensor> sensor;
        SettingsStore settings;
        MarkerStore markers;
        std::shared_ptr<Shutdowner> shutdowner;
        std::shared_ptr<Sounder> sounder;
        Alerter alerter{false};
        LogSink log;
        /// The wording of texts that name the platform's shutdown mechanism.
        const PlatformTexts* platformTexts = &texts();
        /// The wall clock, only for the dates written into the marker; every interval the
        /// engine decides by runs on the monotonic instants its callers pass in.
        std::function<Timestamp()> wallClock = &Timestamp::now;
        /// Where the settings in force come from. Without one the engine reads the file once
        /// at construction, and afterwards only its own commands change the settings.
        std::shared_ptr<SettingsCache> settingsCache = nullptr;
    };

    /// Loads and logs the settings and the thresholds, and turns a marker left by the
    /// previous run's shutdown into the relief notice (clearing the marker).
    Engine(Parts parts, MonoTime now);
    ~Engine() = default;
    // Completions find the engine through a weak handle to `this`; it must never move.
    Engine(const Engine&) = delete;
    Engine& operator=(const Engine&) = delete;
    Engine(Engine&&) = delete;
    Engine& operator=(Engine&&) = delete;

    /// One poll: reads, decides, acts, and returns `view(now)`.
    nlohmann::json tick(MonoTime now);

    /// The stage page's dictionary, rebuilt on every call.
    nlohmann::json view(MonoTime now) const;
    /// `view(now)` serialised as compact JSON text.
    std::string viewJson(MonoTime now) const;
    std::string nowText() const;
    std::string permissionName() const;
    std::string permissionText() const;

    // The user's commands. Each logs one "stage-c" line at least.
    void startSim(MonoTime now);
    void cancel(MonoTime now);
    void dismissSim();
    void dismissRelief();
    void dismissManual();
    void dismissPermission();
    void userShutdownFailed(const ShutdownError& error);
    /// The consent page's answer, dated `wallNow`; false (and a log line) when the settings
    /// could not be saved.
    bool consent(bool on, Timestamp wallNow);
    /// The settings page's switch; changing it counts as consent. False when not saved.
    bool setAuto(bool on, Timestamp wallNow);

    /// Asks the shutdowner whether shutting down is permitted. At most one probe runs at a
    /// time; a request while one runs is dropped silently. `user` makes the result show even
    /// after the notice was dismissed.
    void probePermission(const std::string& reason, bool user);
    /// Records a failed shutdown for the user: the manual notice and, for a missing
    /// permission, the permission state.
    void noteFailure(const ShutdownError& error);

    bool simActive() const { return sim.has_value(); }

    std::shared_ptr<TempSensor> sensor;
    SettingsStore settings;
    std::shared_ptr<SettingsCache> settingsCache;
    MarkerStore markers;
    MarkerQueue markerJobs;
    std::shared_ptr<Shutdowner> shutdowner;
    std::shared_ptr<Sounder> sounder;
    LogSink log;
    Settings settingsInForce;
    Countdown real{CountdownConfig::production(), false};
    std::optional<Countdown> sim;
    Alerter alerter;
    double peak = 0;  // °C, highest reading while stage B held
    std::optional<Relief> relief;
    /// Set at a launch that found the marker: no countdown starts before it.
    std::optional<MonoTime> reliefHoldUntil;
    std::string errorMessage;
    std::optional<Level> level;
    std::optional<double> tempC;
    std::optional<MonoTime> lastEmergencyAlarm;
    std::optional<MonoTime> firedAt;
    CountdownState lastLoggedState = CountdownState::idle;
    MonoTime lastLog = MonoTime::distantPast();
    MonoTime simStart = MonoTime::distantPast();
    MonoTime lastNow;
    std::int64_t shutdownCalls = 0;
    PermissionState permission;
    bool permissionDismissed = false;
    std::optional<ManualFail> manual;
    bool probing = false;

  private:
    void handle(const CountdownEvent& event, MonoTime now, bool simulated);
    void handleReal(const CountdownEvent& event, MonoTime now);
    void runShutdown();
    void logMarkerWrite(const WriteError& error, bool late);
    void reportLateMarker();
    void followSettings();
    void noteSettingsProblem(const std::optional<std::string>& problem);
    /// Puts an answer of the user in force for this run and saves it; false when not saved.
    bool holdAnswer(const Settings& answer, const std::string& failurePrefix,
                    const std::string& savedLine);
    void onShutdownFailed(const ShutdownError& error);
    void onProbeResult(const AutomationOutcome& outcome);
    void logStart();
    void stepReal(MonoTime now, bool critical, bool calm, bool enabled);
    void soundEmergencyAlarm(MonoTime now);
    void logStateChange(MonoTime now, bool critical, bool enabled);
    void checkFailsafe(MonoTime now);
    bool reliefHolds(MonoTime now);
    void stepSimulation(MonoTime now);
    void emit(const std::string& line) const;
    std::string thermalWord() const;
    const Countdown& shown() const { return sim ? *sim : real; }
    /// The real countdown is running or the shutdown was called: the emergency owns the stage.
    bool realRunning() const {
        return real.state == CountdownState::countdown || real.state == CountdownState::fired;
    }

    const PlatformTexts& words_;
    std::function<Timestamp()> wallClock_;
    std::uint64_t settingsVersion_ = 0;
    std::optional<std::string> settingsProblem_;
    /// A marker write that outlasted the wait before the shutdown call; its result is logged
    /// when it comes.
    std::optional<std::shared_future<WriteError>> lateMarker_;

    /// Completions hold this weakly: once the engine is gone they find nothing and do nothing.
    std::shared_ptr<Engine*> self_ = std::make_shared<Engine*>(this);
};

}  // namespace velmora
