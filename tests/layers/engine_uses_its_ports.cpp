// links: velmora_engine
// The ports the engine acts through are visible to it: the control case for the others.
#include "actuators/shutdowner.hpp"
#include "actuators/sounder.hpp"
#include "engine/engine.hpp"
