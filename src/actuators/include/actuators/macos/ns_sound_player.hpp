#pragma once

#include "actuators/named_cue_sounder.hpp"

namespace velmora {

/// Plays a system sound by name through NSSound (Apple only).
PlaySound nsSoundPlayer();

}  // namespace velmora
