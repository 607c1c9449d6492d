#include <dlfcn.h>

#include <system_error>

#include "app/core/desktop_module.hpp"

namespace velmora {

namespace {

std::filesystem::path findModule(const std::filesystem::path& executable) {
    auto beside = executable.parent_path() / desktopModuleName;
    std::error_code error;
    if (std::filesystem::exists(beside, error)) return beside;
    return std::filesystem::path(VELMORA_MODULE_DIR) / desktopModuleName;
}

}  // namespace

std::variant<int, DesktopUnavailable> runDesktopModule(const LaunchOptions& opts,
                                                       const PlatformEnvironment& env,
                                                       const std::filesystem::path& resources,
                                                       const std::filesystem::path& executable) {
    const auto module = findModule(executable);
    // Never closed: GTK cannot be unloaded once it has started.
    void* handle = dlopen(module.c_str(), RTLD_NOW | RTLD_LOCAL);
    if (handle == nullptr) {
        // Only the main thread runs at this point of the start-up.
        const char* why = dlerror();  // NOLINT(concurrency-mt-unsafe)
        return DesktopUnavailable{"the desktop window cannot be loaded (" +
                                  std::string(why != nullptr ? why : module.string()) + ")"};
    }
    auto* symbol = dlsym(handle, desktopEntryName);
    if (symbol == nullptr) {
        return DesktopUnavailable{"the desktop window's module " + module.string() +
                                  " has no entry point"};
    }
    const auto entry = reinterpret_cast<DesktopEntry>(symbol);
    const std::string resourceText = resources.string();
    const DesktopRequest request{&opts, &env, resourceText.c_str()};
    const int status = entry(&request);
    if (status == desktopNoDisplay) return DesktopUnavailable{"cannot open the display"};
    return status;
}

}  // namespace velmora
