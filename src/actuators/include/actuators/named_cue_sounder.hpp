#pragma once

#include <functional>
#include <string>

#include "actuators/sounder.hpp"

namespace velmora {

/// Starts the named sound and returns at once; a sound that cannot be found or played is
/// skipped silently.
using PlaySound = std::function<void(const std::string& name)>;

/// The names of the two sounds the cues use.
struct CueSoundNames {
    std::string alarm;  // also the urgent cue: the two sound alike on purpose
    std::string tick;
};

/// Plays each cue by name through `play`: `alarm` and `urgent` the alarm sound, `tick` the tick.
/// Each cue looks its sound up afresh and never stops one that is still playing.
class NamedCueSounder final : public Sounder {
  public:
    NamedCueSounder(CueSoundNames names, PlaySound play);

    void alarm() override;
    void urgent() override;
    void tick() override;

  private:
    CueSoundNames names_;
    PlaySound play_;
};

}  // namespace velmora
