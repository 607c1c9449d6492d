#include "app/controller/platform_services.hpp"
#include "app/core/desktop_module.hpp"
#include "app/gtk/desktop_run.hpp"

// The desktop window as a module: the executable loads it only when a display may exist, so
// a headless watchdog maps none of GTK and WebKit.
extern "C" __attribute__((visibility("default"))) int velmora_desktop_main(
    const velmora::DesktopRequest* request) {
    using namespace velmora;
    if (!openDesktopDisplay()) return desktopNoDisplay;
    const std::filesystem::path resources(request->resources);
    auto parts = makePlatformParts(*request->opts, *request->env, resources);
    return runDesktop(*request->opts, std::move(parts), resources);
}
