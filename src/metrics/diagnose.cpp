#include "metrics/diagnose.hpp"

#include <array>
#include <cmath>
#include <cstdio>

#include "metrics/live_cause.hpp"
#include "metrics/live_model.hpp"
#include "metrics/source_table.hpp"

namespace velmora {

namespace {

// A process names itself: control characters are shown as codes, so no name forges a line.
std::string printable(const std::string& name) {
    std::string text;
    for (const char c : LiveModel::displayableName(name)) {
        const auto byte = static_cast<unsigned char>(c);
        if (byte < 0x20 || byte == 0x7f) {
            std::array<char, 8> code{};
            std::snprintf(code.data(), code.size(), "\\x%02x", byte);
            text += code.data();
        } else {
            text += c;
        }
    }
    return text;
}

std::string percentText(double percent) {
    return std::to_string(std::lround(percent)) + "%";
}

}  // namespace

std::string busiestReport(const HeatCause& cause, Seconds between) {
    std::array<char, 32> seconds{};
    std::snprintf(seconds.data(), seconds.size(), "%.2f", between.count());
    std::string report =
        "\nBusiest processes between the two samples (" + std::string(seconds.data()) + " s):\n";
    if (cause.processes.empty()) report += "  none measured\n";
    for (const auto& row : cause.processes) {
        report += "  " + printable(row.name) + " (pid " + std::to_string(row.pid) + ") " +
                  percentText(row.percent) + " of a core\n";
    }
    for (const auto& row : cause.services)
        report += "  unit " + printable(row.name) + " " + percentText(row.percent) + "\n";
    for (const auto& row : cause.gpu) {
        report += "  GPU " + printable(row.name) + " (pid " + std::to_string(row.pid) + ") " +
                  percentText(row.percent) + " of the GPU\n";
    }
    return report;
}

std::string diagnoseReport(HeatCollector& collector, Timestamp now) {
    const LiveInputs snapshot = collector.sample(now);
    std::string report = "Sensors: " + collector.sensorSummary() + "\n\n";
    report += renderSourceTable(collector.sourceTable());
    report += "\nLive JSON:\n" + LiveModel::json(snapshot) + "\n";
    return report;
}

}  // namespace velmora
