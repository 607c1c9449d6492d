#pragma once

#include <memory>
#include <string>

#include "metrics/heat_cause_tracker.hpp"

namespace velmora {

/// The root below which the per-process readers look for proc/ and sys/fs/cgroup/:
/// `VELMORA_CAUSE_ROOT` when set and not empty, else the sensors' root. Apart from the sensors'
/// root so that a fixture machine's sensors can be read beside the real processes.
std::string causeRootFromEnvironment(const std::string& metricsRoot);

/// The platform's readers of what uses the machine, below `root`; null where there are none.
std::unique_ptr<CauseReader> makePlatformCauseReader(const std::string& root);

/// A tracker over `makePlatformCauseReader(root)`; null where the platform has no readers.
std::unique_ptr<HeatCauseTracker> makePlatformCauseTracker(const std::string& root);

}  // namespace velmora
