// links: velmora_app_tray
// expect-error: app/controller/app_controller.hpp: No such file or directory
// The tray item shows what it is given; it knows the portable rules only.
#include "app/controller/app_controller.hpp"
