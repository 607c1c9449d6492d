#include <dlfcn.h>

#include <system_error>

#include "app/core/desktop_module.hpp"
#include "policy/constants.hpp"

namespace velmora {

namespace {

std::filesystem::path findModule(const std::filesystem::path& executable) {
    auto beside = executable.parent_path() / desktopModuleName;
    std::error_code error;
    if (std::filesystem::exists(beside, error)) return beside;
    return std::filesystem::path(VELMORA_MODULE_DIR) / desktopModuleName;
}

}  // namespace

std::optional<std::string> desktopModuleMismatch(const DesktopModule& module) {
    const std::string_view version =
        module.version != nullptr ? std::string_view(module.version) : std::string_view();
    if (module.abi == desktopModuleAbi && version == watchdog::version) return std::nullopt;
    return "interface " + std::to_string(module.abi) + " of version " +
           (version.empty() ? std::string("(none)") : std::string(version)) +
           ", but this program needs interface " + std::to_string(desktopModuleAbi) +
           " of version " + std::string(watchdog::version);
}

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
    const auto* entry = static_cast<const DesktopModule*>(dlsym(handle, desktopEntryName));
    if (entry == nullptr) {
        return DesktopUnavailable{"the desktop window's module " + module.string() +
                                  " has no entry point"};
    }
    if (const auto mismatch = desktopModuleMismatch(*entry)) {
        return DesktopUnavailable{"the desktop window's module " + module.string() +
                                  " does not belong to this program (" + *mismatch + ")"};
    }
    const std::string resourceText = resources.string();
    const DesktopRequest request{&opts, &env, resourceText.c_str()};
    const int status = entry->run(&request);
    if (status == desktopNoDisplay) return DesktopUnavailable{"cannot open the display"};
    return status;
}

}  // namespace velmora
