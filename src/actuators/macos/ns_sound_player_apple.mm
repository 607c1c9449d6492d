#include "actuators/macos/ns_sound_player.hpp"

#import <AppKit/AppKit.h>

namespace velmora {

// A fresh lookup per cue; a name the system does not know yields nil, and nil plays nothing.
PlaySound nsSoundPlayer() {
    return [](const std::string& name) {
        [[NSSound soundNamed:[NSString stringWithUTF8String:name.c_str()]] play];
    };
}

}  // namespace velmora
