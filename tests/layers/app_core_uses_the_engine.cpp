// links: velmora_app_core
// expect-error: engine/engine.hpp: No such file or directory
// The portable application rules need neither the engine nor the controller.
#include "engine/engine.hpp"
