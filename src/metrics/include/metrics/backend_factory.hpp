#pragma once

#include <memory>
#include <string>

#include "metrics/metrics_backend.hpp"

namespace velmora {

/// The root under which the Linux readers look for /proc and /sys: `VELMORA_ROOT` when set and
/// not empty, else "/".
std::string metricsRootFromEnvironment();

/// The running platform's backend. On Linux every file is read below `root`; macOS ignores it.
std::unique_ptr<MetricsBackend> makePlatformBackend(const std::string& root);

}  // namespace velmora
