#include "actuators/macos/ns_sound_player.hpp"
#include "actuators/osascript_shutdowner.hpp"
#include "actuators/script_runner.hpp"
#include "actuators/system_sounder.hpp"
#include "app/cocoa/user_defaults.hpp"
#include "app/controller/platform_services.hpp"
#include "policy/platform_texts.hpp"

namespace velmora {

// The pages come from the application bundle (the shell asks it); `resources` is unused here.
PlatformParts makePlatformParts(const LaunchOptions& opts, const PlatformEnvironment& /*env*/,
                                const std::filesystem::path& /*resources*/) {
    PlatformParts parts;
    parts.services.collector = makePlatformCollector(opts);
    parts.services.preferences = makeUserDefaultsPreferences();
    parts.services.realShutdowner = [](LogSink log, Post post) {
        return std::make_shared<OsascriptShutdowner>(std::move(log), std::move(post));
    };
    parts.services.realProbe = [](Seconds timeout) {
        return ScriptRunner{}.run(texts().probeScript, timeout);
    };
    if (!opts.mute) {
        parts.sounds = std::make_shared<SystemSounder>(nsSoundPlayer());
        parts.services.systemSounder = [sounds = parts.sounds] { return sounds; };
    }
    return parts;
}

}  // namespace velmora
