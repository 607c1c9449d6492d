#include "metrics/cause_factory.hpp"
#include "metrics/linux/linux_cause_reader.hpp"
#include "metrics/linux/nvml_library.hpp"

namespace velmora {

std::unique_ptr<CauseReader> makePlatformCauseReader(const std::string& root) {
    // NVML knows nothing of a root prefix; a fixture tree must not see the host's GPU.
    const bool liveSystem = root.find_first_not_of('/') == std::string::npos;
    LinuxCauseReader::LoadGpu loadGpu;
    if (liveSystem) loadGpu = [] { return loadNvml(); };
    return std::make_unique<LinuxCauseReader>(root, std::move(loadGpu));
}

}  // namespace velmora
