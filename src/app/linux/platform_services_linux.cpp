#include "actuators/linux/canberra_sounder.hpp"
#include "actuators/linux/logind_calls.hpp"
#include "actuators/linux/logind_shutdowner.hpp"
#include "app/controller/platform_services.hpp"
#include "app/core/file_preferences.hpp"
#include "app/core/notify_preference.hpp"
#include "app/linux/desktop_notifier.hpp"
#include "app/linux/journal_mirror.hpp"
#include "app/linux/systemd_notifier.hpp"

namespace velmora {

namespace {

void addDesktopNotifier(PlatformParts& parts, const PlatformEnvironment& env,
                        const std::shared_ptr<LogSink>& relay) {
    auto notifier = std::make_shared<DesktopNotifier>();
    DesktopNotifier::Hooks hooks;
    hooks.log = [relay](const std::string& line) {
        if (*relay) (*relay)(line);
    };
    // Read when a rise is due, so that the desktop run's choice reaches a running watchdog.
    if (const auto config = defaultConfigDir(env)) {
        hooks.risesWanted = [prefs = std::make_shared<FilePreferences>(*config)] {
            return loadNotifyWhenHot(*prefs);
        };
    }
    notifier->connect(std::move(hooks));
    parts.services.connectCountdownCancel =
        [weak = std::weak_ptr<DesktopNotifier>(notifier)](std::function<void()> cancel) {
            DesktopNotifier::Hooks later;
            later.cancelCountdown = std::move(cancel);
            if (const auto alive = weak.lock()) alive->connect(std::move(later));
        };
    parts.services.observers.push_back(std::move(notifier));
}

}  // namespace

PlatformParts makePlatformParts(const LaunchOptions& opts, const PlatformEnvironment& env,
                                const std::filesystem::path& resources) {
    PlatformParts parts;
    // Discovery and every read happen on the sampling thread, never on the loop.
    parts.services.makeCollector = [opts] { return makePlatformCollector(opts); };
    if (const auto config = defaultConfigDir(env)) {
        parts.services.preferences = std::make_unique<FilePreferences>(*config);
    }
    parts.services.realShutdowner = [](LogSink log, Post post) {
        return std::make_shared<LogindShutdowner>(std::move(log), std::move(post));
    };
    parts.services.realProbe = askCanPowerOff;
    // Under systemd: readiness, status and watchdog pings, and log lines in the journal.
    if (auto notifier = SystemdNotifier::fromEnvironment()) {
        parts.services.observers.push_back(std::move(notifier));
    }
    parts.services.logMirror = journalMirrorFromEnvironment();
    // The player and the notifications are made before the log is open; their lines reach
    // the log once it is.
    auto relay = std::make_shared<LogSink>();
    parts.services.connectLog = [relay](LogSink log) { *relay = std::move(log); };
    addDesktopNotifier(parts, env, relay);
    if (!opts.mute) {
        parts.sounds = std::make_shared<CanberraSounder>(resources / "sounds",
                                                         [relay](const std::string& line) {
                                                             if (*relay) (*relay)(line);
                                                         });
        parts.services.systemSounder = [sounds = parts.sounds] { return sounds; };
    }
    return parts;
}

}  // namespace velmora
