#include "app/controller/platform_services.hpp"
#include "app/core/desktop_module.hpp"
#include "app/gtk/desktop_run.hpp"
#include "policy/constants.hpp"

// The desktop window as a module: the executable loads it only when a display may exist, so
// a headless watchdog maps none of GTK and WebKit. The watchdog's code is not in here: the
// module uses the executable's own shared library, already loaded.
namespace {

int runDesktopWindow(const velmora::DesktopRequest* request) {
    using namespace velmora;
    if (!openDesktopDisplay()) return desktopNoDisplay;
    const std::filesystem::path resources(request->resources);
    auto parts = makePlatformParts(*request->opts, *request->env, resources);
    return runDesktop(*request->opts, std::move(parts), resources);
}

}  // namespace

extern "C" __attribute__((visibility("default")))
const velmora::DesktopModule velmora_desktop_module{
    velmora::desktopModuleAbi, velmora::watchdog::version.data(), runDesktopWindow};
