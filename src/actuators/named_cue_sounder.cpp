#include "actuators/named_cue_sounder.hpp"

#include <utility>

namespace velmora {

NamedCueSounder::NamedCueSounder(CueSoundNames names, PlaySound play)
    : names_(std::move(names)), play_(std::move(play)) {}

void NamedCueSounder::alarm() {
    if (play_) play_(names_.alarm);
}

// The urgent cue is the alarm sound; only the muted log tells the two apart.
void NamedCueSounder::urgent() {
    alarm();
}

void NamedCueSounder::tick() {
    if (play_) play_(names_.tick);
}

}  // namespace velmora
