#include "actuators/macos/ns_sound_player.hpp"

#import <AppKit/AppKit.h>

#include <map>

#include "actuators/macos/bundled_cue.hpp"

namespace velmora {

namespace {

NSString* nsName(std::string_view text) {
    return [[NSString alloc] initWithBytes:text.data()
                                    length:text.size()
                                  encoding:NSUTF8StringEncoding];
}

/// The bundled stand-in for a system sound, loaded once and kept for the whole run (main
/// thread only, as every cue is).
NSSound* bundledSound(const std::string& systemName) {
    static std::map<std::string, NSSound*> loaded;
    const auto found = loaded.find(systemName);
    if (found != loaded.end()) return found->second;
    NSSound* sound = nil;
    if (const auto cue = bundledCueFor(systemName)) {
        NSURL* url = [NSBundle.mainBundle URLForResource:nsName(*cue)
                                           withExtension:@"wav"
                                            subdirectory:@"sounds"];
        if (url != nil) sound = [[NSSound alloc] initWithContentsOfURL:url byReference:YES];
    }
    loaded[systemName] = sound;
    return sound;
}

}  // namespace

// A fresh lookup per cue; a name the system does not know falls back to the application's own
// recording of that cue, and a sound that is found nowhere plays nothing.
PlaySound nsSoundPlayer() {
    return [](const std::string& name) {
        NSSound* sound = [NSSound soundNamed:nsName(name)];
        if (sound == nil) sound = bundledSound(name);
        [sound play];
    };
}

}  // namespace velmora
