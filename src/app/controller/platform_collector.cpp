#include "app/controller/platform_services.hpp"
#include "metrics/backend_factory.hpp"

namespace velmora {

// One factory for every platform: the backend is the platform's own (makePlatformBackend),
// the forced thermal state is applied the same way everywhere.
std::unique_ptr<HeatCollector> makePlatformCollector(const LaunchOptions& opts) {
    auto collector =
        std::make_unique<HeatCollector>(makePlatformBackend(metricsRootFromEnvironment()));
    collector->forcedThermal = opts.forceThermal;
    return collector;
}

}  // namespace velmora
