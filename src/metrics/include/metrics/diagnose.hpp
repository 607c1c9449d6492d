#pragma once

#include <string>

#include "metrics/heat_collector.hpp"
#include "policy/timestamp.hpp"

namespace velmora {

/// What `--diagnose` prints: the sensor summary, the source table of one fresh sample and that
/// sample's live JSON. Takes the sample itself.
std::string diagnoseReport(HeatCollector& collector, Timestamp now);

}  // namespace velmora
