#include "app/controller/platform_services.hpp"
#include "metrics/backend_factory.hpp"
#include "metrics/cause_factory.hpp"

namespace velmora {

// One factory for every platform: the backend is the platform's own (makePlatformBackend),
// the forced thermal state is applied the same way everywhere, and so is the heat cause.
std::unique_ptr<HeatCollector> makePlatformCollector(const LaunchOptions& opts) {
    const std::string root = metricsRootFromEnvironment();
    auto collector = std::make_unique<HeatCollector>(makePlatformBackend(root));
    collector->forcedThermal = opts.forceThermal;
    collector->setCauseTracker(makePlatformCauseTracker(causeRootFromEnvironment(root)));
    return collector;
}

}  // namespace velmora
