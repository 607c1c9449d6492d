#include "actuators/linux/canberra_sounder.hpp"
#include "actuators/linux/logind_calls.hpp"
#include "actuators/linux/logind_shutdowner.hpp"
#include "app/controller/platform_services.hpp"
#include "app/core/file_preferences.hpp"
#include "app/linux/journal_mirror.hpp"
#include "app/linux/systemd_notifier.hpp"
#include "metrics/backend_factory.hpp"
#include "metrics/cause_factory.hpp"

namespace velmora {

std::unique_ptr<HeatCollector> makePlatformCollector(const LaunchOptions& opts) {
    const std::string root = metricsRootFromEnvironment();
    auto collector = std::make_unique<HeatCollector>(makePlatformBackend(root));
    collector->forcedThermal = opts.forceThermal;
    collector->setCauseTracker(makePlatformCauseTracker(causeRootFromEnvironment(root)));
    return collector;
}

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
    if (!opts.mute) {
        // The player is made before the log is open; its lines reach the log once it is.
        auto relay = std::make_shared<LogSink>();
        parts.sounds = std::make_shared<CanberraSounder>(resources / "sounds",
                                                         [relay](const std::string& line) {
                                                             if (*relay) (*relay)(line);
                                                         });
        parts.services.systemSounder = [sounds = parts.sounds] { return sounds; };
        parts.services.connectLog = [relay](LogSink log) { *relay = std::move(log); };
    }
    return parts;
}

}  // namespace velmora
