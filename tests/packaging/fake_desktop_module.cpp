#include <string_view>

#include "app/core/desktop_module.hpp"
#include "policy/constants.hpp"

// A stand-in for the desktop module, built with the interface number and version the loader
// tests choose, so that the loader's checks meet a module that does not belong to it.
namespace {

int run(const velmora::DesktopRequest* request) {
    // Proves the request arrived whole: the options and the resource folder.
    return request->opts->mute && std::string_view(request->resources) == "/resources" ? 42 : 1;
}

}  // namespace

#ifndef VELMORA_FAKE_NO_ENTRY
extern "C" __attribute__((visibility("default")))
const velmora::DesktopModule velmora_desktop_module{VELMORA_FAKE_ABI, VELMORA_FAKE_VERSION, run};
#else
extern "C" __attribute__((visibility("default"))) int velmora_desktop_main() {
    return run(nullptr);
}
#endif
