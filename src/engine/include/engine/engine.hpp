#pragma once

#include <cstdint>
#include <filesystem>
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

namespace testing {
class EngineTestAccess;
}

/// The watchdog's heart. Each `tick` (after every sample, and four times a second while a
/// countdown or a rehearsal runs) reads the temperature, updates the stage level, runs the real
/// countdown and any simulation, performs the effects of their events (sounds, marker, shutdown
/// call), and returns the stage page's view. Everything runs on the owner's main thread; the
/// shutdowner delivers its completions there too, so there are no locks.
/// A tick never waits on the disk: the settings come from an in-memory cache, and the marker is
/// written and removed on a thread of its own.
///
/// Its state changes only through `tick` and the user's commands; others read it through the
/// view, a few narrow accessors, and `snapshot` for tests.
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

    bool simActive() const { return sim_.has_value(); }
    /// The settings the engine decides by: the file's, or an answer given in this run.
    const Settings& settingsInForce() const { return settingsInForce_; }
    /// Where the settings are saved, for messages that name the file.
    const std::filesystem::path& settingsFile() const { return settings_.url(); }

    /// A copy of the engine's state at one moment, for tests to inspect.
    struct Snapshot {
        Countdown real;                ///< the real countdown
        std::optional<Countdown> sim;  ///< the rehearsal, while one runs or shows its end
        MonoTime simStart;             ///< when the rehearsal was started
        Settings settingsInForce;      ///< see `settingsInForce()`
        std::optional<Relief> relief;  ///< the relief notice
        std::optional<MonoTime> reliefHoldUntil;     ///< no countdown before it after a relief
        std::optional<ManualFail> manual;            ///< the "shut down manually" notice
        PermissionState permission;                  ///< what the last probe or failure said
        bool permissionDismissed = false;            ///< the permission notice hidden for this run
        bool probing = false;                        ///< a permission probe is running
        double peak = 0;                             ///< °C, highest reading while stage B held
        std::optional<Level> level;                  ///< the latest tick's stage level
        std::optional<double> tempC;                 ///< the latest tick's reading
        std::string errorMessage;                    ///< the stage page's error line
        std::int64_t shutdownCalls = 0;              ///< calls of the shutdowner by the countdown
        std::optional<MonoTime> firedAt;             ///< when the shutdown was called
        std::optional<MonoTime> lastEmergencyAlarm;  ///< when the alarm last sounded
        MonoTime lastNow;                            ///< the latest tick's time
    };
    Snapshot snapshot() const;

  private:
    /// Tests reach through it what no command can: a rehearsal beside a running countdown, a
    /// reading that no tick has acted on yet, and the end of the marker work.
    friend class testing::EngineTestAccess;

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
    void soundEmergencyAlarm(MonoTime now);
    void logStateChange(MonoTime now, bool critical, bool enabled);
    void checkFailsafe(MonoTime now);
    bool reliefHolds(MonoTime now);
    void stepSimulation(MonoTime now);
    void emit(const std::string& line) const;
    std::string thermalWord() const;
    const Countdown& shown() const { return sim_ ? *sim_ : real_; }
    /// The real countdown is running or the shutdown was called: the emergency owns the stage.
    bool realRunning() const {
        return real_.state() == CountdownState::countdown || real_.state() == CountdownState::fired;
    }

    std::shared_ptr<TempSensor> sensor_;
    SettingsStore settings_;
    std::shared_ptr<SettingsCache> settingsCache_;
    MarkerStore markers_;
    MarkerQueue markerJobs_;
    std::shared_ptr<Shutdowner> shutdowner_;
    std::shared_ptr<Sounder> sounder_;
    LogSink log_;
    Settings settingsInForce_;
    Countdown real_{CountdownConfig::production(), false};
    std::optional<Countdown> sim_;
    Alerter alerter_;
    double peak_ = 0;  // °C, highest reading while stage B held
    std::optional<Relief> relief_;
    /// Set at a launch that found the marker: no countdown starts before it.
    std::optional<MonoTime> reliefHoldUntil_;
    std::string errorMessage_;
    std::optional<Level> level_;
    std::optional<double> tempC_;
    std::optional<MonoTime> lastEmergencyAlarm_;
    std::optional<MonoTime> firedAt_;
    CountdownState lastLoggedState_ = CountdownState::idle;
    MonoTime lastLog_ = MonoTime::distantPast();
    MonoTime simStart_ = MonoTime::distantPast();
    MonoTime lastNow_;
    std::int64_t shutdownCalls_ = 0;
    PermissionState permission_;
    bool permissionDismissed_ = false;
    std::optional<ManualFail> manual_;
    bool probing_ = false;

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
