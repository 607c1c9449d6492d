#pragma once

#include <string>

#include "metrics/heat_cause.hpp"
#include "metrics/heat_collector.hpp"
#include "policy/duration.hpp"
#include "policy/timestamp.hpp"

namespace velmora {

/// What `--diagnose` prints: the sensor summary, the source table of one fresh sample and that
/// sample's live JSON. Takes the sample itself.
std::string diagnoseReport(HeatCollector& collector, Timestamp now);

/// The busiest processes, units and GPU processes between `--diagnose`'s two samples, one per
/// line, names made printable.
std::string busiestReport(const HeatCause& cause, Seconds between);

}  // namespace velmora
