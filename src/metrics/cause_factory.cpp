#include "metrics/cause_factory.hpp"

#include <cstdlib>

namespace velmora {

std::string causeRootFromEnvironment(const std::string& metricsRoot) {
    // Read once at start-up, before any thread exists.
    const char* root = std::getenv("VELMORA_CAUSE_ROOT");  // NOLINT(concurrency-mt-unsafe)
    return root && *root ? std::string(root) : metricsRoot;
}

std::unique_ptr<HeatCauseTracker> makePlatformCauseTracker(const std::string& root) {
    auto reader = makePlatformCauseReader(root);
    if (!reader) return nullptr;
    return std::make_unique<HeatCauseTracker>(std::move(reader));
}

}  // namespace velmora
