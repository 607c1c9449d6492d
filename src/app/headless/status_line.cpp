#include "app/headless/status_line.hpp"

#include <cmath>

namespace velmora {

namespace {

std::string cpuText(const StatusReport& report) {
    std::string text = "CPU ";
    text += report.cpuTemp && std::isfinite(*report.cpuTemp)
                ? std::to_string(std::lround(*report.cpuTemp)) + "°C"
                : "n/a";
    text += " ";
    text += report.cpuBusy && std::isfinite(*report.cpuBusy)
                ? std::to_string(std::lround(*report.cpuBusy)) + "%"
                : "n/a";
    return text;
}

}  // namespace

std::string statusLineText(const StatusReport& report) {
    std::string text = report.stage + " · thermal " + report.thermal + " · " + cpuText(report);
    if (report.countdown) {
        text += std::string(" · ") + (report.simulation ? "SIMULATION " : "COUNTDOWN ") +
                std::to_string(*report.countdown) + "s";
    }
    return text;
}

std::optional<std::string> changeLine(const std::optional<StatusReport>& previous,
                                      const StatusReport& next) {
    const bool changed = !previous || previous->stage != next.stage ||
                         previous->state != next.state || previous->mode != next.mode ||
                         previous->simulation != next.simulation;
    if (!changed) return std::nullopt;
    std::string line = "stage " + next.stage + ", state " + next.state + ", page " + next.mode;
    if (next.simulation) line += " (simulation)";
    // Without a page to answer on, say how to answer.
    if (next.mode == "consent") line += " (answer with --consent on or --consent off)";
    return line;
}

}  // namespace velmora
