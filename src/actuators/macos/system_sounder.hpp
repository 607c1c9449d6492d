#pragma once

#include <memory>

#include "actuators/sounder.hpp"

namespace velmora {

/// The Mac's own sounds: "Sosumi" for the alarm and the urgent cue, "Tink" for the tick.
std::unique_ptr<Sounder> makeSystemSounder();

}  // namespace velmora
