#include "metrics/live_cause.hpp"

#include <cmath>

#include "os/utf8.hpp"

namespace velmora::LiveModel {

namespace {

nlohmann::json processList(const std::vector<ProcessShare>& rows) {
    nlohmann::json list = nlohmann::json::array();
    for (const auto& row : rows) {
        list.push_back({{"name", displayableName(row.name)},
                        {"pid", row.pid},
                        {"percent", std::lround(row.percent)}});
    }
    return list;
}

nlohmann::json serviceList(const std::vector<ServiceShare>& rows) {
    nlohmann::json list = nlohmann::json::array();
    for (const auto& row : rows) {
        list.push_back(
            {{"name", displayableName(row.name)}, {"percent", std::lround(row.percent)}});
    }
    return list;
}

}  // namespace

std::string displayableName(std::string_view bytes) {
    std::string text;
    text.reserve(bytes.size());
    while (!bytes.empty()) {
        if (const auto sequence = utf8SequenceAt(bytes)) {
            text.append(bytes.substr(0, sequence->length));
            bytes.remove_prefix(sequence->length);
        } else {
            text.append("\xEF\xBF\xBD");
            bytes.remove_prefix(1);
        }
    }
    return text;
}

nlohmann::json heatCauseEntry(const HeatCause& cause) {
    HeatCause shown = cause;
    for (auto& row : shown.processes)
        row.name = displayableName(row.name);
    return {{"processes", processList(cause.processes)},
            {"services", serviceList(cause.services)},
            {"gpu", processList(cause.gpu)},
            {"text", heatCauseText(shown)}};
}

}  // namespace velmora::LiveModel
