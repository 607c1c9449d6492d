// links: velmora_engine
// expect-error: actuators/dry_run_shutdowner.hpp: No such file or directory
// The engine acts through the Shutdowner and Sounder ports only, never an actuator itself.
#include "actuators/dry_run_shutdowner.hpp"
