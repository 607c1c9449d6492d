#include <cstdlib>

#include "metrics/backend_factory.hpp"

namespace velmora {

std::string metricsRootFromEnvironment() {
    // Read once at start-up, before any thread exists.
    const char* root = std::getenv("VELMORA_ROOT");  // NOLINT(concurrency-mt-unsafe)
    return root && *root ? std::string(root) : std::string("/");
}

}  // namespace velmora
