#include "actuators/macos/system_sounder.hpp"

#import <AppKit/AppKit.h>

#include "actuators/named_cue_sounder.hpp"

namespace velmora {

// A fresh lookup per cue; a name the system does not know yields nil and plays nothing.
std::unique_ptr<Sounder> makeSystemSounder() {
    return std::make_unique<NamedCueSounder>(
        CueSoundNames{.alarm = "Sosumi", .tick = "Tink"}, [](const std::string& name) {
            [[NSSound soundNamed:[NSString stringWithUTF8String:name.c_str()]] play];
        });
}

}  // namespace velmora
