#include "metrics/diagnose.hpp"

#include "metrics/live_model.hpp"
#include "metrics/source_table.hpp"

namespace velmora {

std::string diagnoseReport(HeatCollector& collector, Timestamp now) {
    const LiveInputs snapshot = collector.sample(now);
    std::string report = "Sensors: " + collector.sensorSummary() + "\n\n";
    report += renderSourceTable(collector.sourceTable());
    report += "\nLive JSON:\n" + LiveModel::json(snapshot) + "\n";
    return report;
}

}  // namespace velmora
