#include "metrics/heat_cause.hpp"

#include <cmath>
#include <cstddef>

namespace velmora {

namespace {

// Rows shown on the pages and in the log.
constexpr std::size_t kShownProcesses = 3;
constexpr std::size_t kShownServices = 3;

std::string wholePercent(double percent) {
    return std::to_string(std::lround(percent));
}

std::string pagePhrase(const ProcessShare& row) {
    return row.name + " " + wholePercent(row.percent) + " %";
}

template <typename Row, typename Say>
std::string joined(const std::vector<Row>& rows, std::size_t most, const char* separator, Say say) {
    std::string text;
    for (std::size_t i = 0; i < rows.size() && i < most; ++i) {
        if (i > 0) text += separator;
        text += say(rows[i]);
    }
    return text;
}

}  // namespace

std::string heatCauseText(const HeatCause& cause) {
    return joined(cause.processes, kShownProcesses, " \u00b7 ", pagePhrase);
}

std::optional<std::string> topProcessPhrase(const HeatCause& cause) {
    if (cause.processes.empty()) return std::nullopt;
    return pagePhrase(cause.processes.front());
}

std::string heatRiseLine(const LevelRise& rise, const HeatCause& cause) {
    std::string line = "heat: " + std::string(label(rise.from)) + " -> " +
                       std::string(label(rise.to)) + "; busiest: ";
    if (cause.processes.empty()) {
        line += "nothing measurable";
    } else {
        line += joined(cause.processes, kShownProcesses, ", ", [](const ProcessShare& row) {
            return row.name + " (pid " + std::to_string(row.pid) + ") " +
                   wholePercent(row.percent) + "% of a core";
        });
    }
    if (!cause.services.empty()) {
        line += "; services: " +
                joined(cause.services, kShownServices, ", ", [](const ServiceShare& row) {
                    return row.name + " " + wholePercent(row.percent) + "%";
                });
    }
    if (!cause.gpu.empty()) {
        line += "; gpu: " + joined(cause.gpu, kShownProcesses, ", ", [](const ProcessShare& row) {
                    return row.name + " (pid " + std::to_string(row.pid) + ") " +
                           wholePercent(row.percent) + "% of the GPU";
                });
    }
    return line;
}

}  // namespace velmora
