#pragma once

#include <utility>

#include "actuators/named_cue_sounder.hpp"

namespace velmora {

/// The Mac's own named system sounds: "Sosumi" for the alarm and, identically, the urgent cue;
/// "Tink" for the tick. `play` reaches the system's sounds (see macos/ns_sound_player.hpp).
class SystemSounder final : public Sounder {
  public:
    explicit SystemSounder(PlaySound play)
        : cues_({.alarm = "Sosumi", .tick = "Tink"}, std::move(play)) {}

    void alarm() override { cues_.alarm(); }
    void urgent() override { cues_.urgent(); }
    void tick() override { cues_.tick(); }

  private:
    NamedCueSounder cues_;
};

}  // namespace velmora
