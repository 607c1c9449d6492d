#include "app/controller/history_view.hpp"

#include <array>
#include <nlohmann/json.hpp>
#include <utility>

#include "policy/constants.hpp"

namespace velmora {

namespace {

constexpr std::int64_t kRecentSpan = 15 * 60;
constexpr std::int64_t kRecentSteps = 60;
constexpr std::array<std::pair<std::string_view, std::int64_t>, 4> kRanges{{
    {"15m", 15 * 60},
    {"2h", 2 * 3600},
    {"24h", 24 * 3600},
    {"30d", 30 * 24 * 3600},
}};

nlohmann::json figurePart(const HistoryRow& row, HistorySeries series,
                          double HistoryFigure::*part) {
    const auto& figure = row.figure(series);
    return figure ? nlohmann::json((*figure).*part) : nlohmann::json();
}

nlohmann::json rowJson(const HistoryRow& row) {
    using S = HistorySeries;
    const auto mean = &HistoryFigure::mean;
    return nlohmann::json::array({
        row.time,
        row.resolution,
        row.level ? nlohmann::json(rawValue(*row.level)) : nlohmann::json(),
        figurePart(row, S::hottest, mean),
        figurePart(row, S::hottest, &HistoryFigure::min),
        figurePart(row, S::hottest, &HistoryFigure::max),
        figurePart(row, S::cpuPercent, mean),
        figurePart(row, S::cpuTemp, mean),
        figurePart(row, S::gpuTemp, mean),
        figurePart(row, S::power, mean),
        figurePart(row, S::fan, mean),
        figurePart(row, S::battery, mean),
        row.busiest ? nlohmann::json(*row.busiest) : nlohmann::json(),
    });
}

}  // namespace

std::optional<std::int64_t> historyRangeSeconds(std::string_view range) {
    for (const auto& [name, seconds] : kRanges) {
        if (name == range) return seconds;
    }
    return std::nullopt;
}

nlohmann::json historyView(const HistoryStore& store, std::string_view range, std::int64_t now) {
    const auto span = historyRangeSeconds(range).value_or(kRanges.front().second);
    auto rows = nlohmann::json::array();
    for (const auto& row : store.rowsSince(now - span)) {
        if (row.time <= now) rows.push_back(rowJson(row));
    }
    return {
        {"range", std::string(range)},
        {"span", span},
        {"now", now},
        {"bands",
         {{"warm", watchdog::warmC},
          {"hot", watchdog::hotC},
          {"extreme", watchdog::extremeC},
          {"critical", watchdog::criticalC}}},
        {"columns",
         {"time", "resolution", "level", "hottest", "hottestMin", "hottestMax", "cpu", "cpuTemp",
          "gpuTemp", "power", "fan", "battery", "busiest"}},
        {"rows", std::move(rows)},
    };
}

std::string historyCall(const nlohmann::json& view) {
    // Process names are outside text: a byte that is not UTF-8 becomes U+FFFD, never an error.
    return "window.heatHistory && window.heatHistory.render(" +
           view.dump(-1, ' ', false, nlohmann::json::error_handler_t::replace) + ")";
}

std::vector<std::optional<double>> recentCpu(const HistoryStore& store, std::int64_t now) {
    constexpr auto step = kRecentSpan / kRecentSteps;
    const auto from = now - kRecentSpan + 1;
    std::array<std::pair<double, int>, kRecentSteps> sums{};
    for (const auto& row : store.rowsSince(from)) {
        const auto& cpu = row.figure(HistorySeries::cpuPercent);
        if (!cpu || row.time > now) continue;
        const auto index = std::min<std::int64_t>((row.time - from) / step, kRecentSteps - 1);
        auto& [sum, count] = sums.at(static_cast<std::size_t>(index));
        sum += cpu->mean;
        ++count;
    }
    std::vector<std::optional<double>> steps;
    steps.reserve(sums.size());
    for (const auto& [sum, count] : sums)
        steps.push_back(count > 0 ? std::optional(sum / count) : std::nullopt);
    return steps;
}

std::string recentCpuCall(const std::vector<std::optional<double>>& steps) {
    auto values = nlohmann::json::array();
    for (const auto& step : steps)
        values.push_back(step ? nlohmann::json(*step) : nlohmann::json());
    return "window.heatLive && window.heatLive.recent && window.heatLive.recent(" + values.dump() +
           ")";
}

}  // namespace velmora
