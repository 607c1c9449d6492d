#include "metrics/backend_factory.hpp"
#include "metrics/linux/linux_backend.hpp"
#include "metrics/linux/nvml_library.hpp"
#include "metrics/linux/power_profiles_bus.hpp"

namespace velmora {

std::unique_ptr<MetricsBackend> makePlatformBackend(const std::string& root) {
    // NVML knows nothing of a root prefix; a fixture tree must not see the host's GPU.
    const bool liveSystem = root.find_first_not_of('/') == std::string::npos;
    auto backend = std::make_unique<LinuxBackend>(root, liveSystem ? loadNvml() : nullptr);
    if (liveSystem) backend->setPowerProfiles(std::make_unique<PowerProfilesBus>());
    return backend;
}

}  // namespace velmora
