#include "store/history_csv.hpp"

#include <array>
#include <charconv>

#include "store/dates.hpp"

namespace velmora {

namespace {

constexpr std::array<std::string_view, historySeriesCount> kNames{
    "cpu_temp_c", "gpu_temp_c", "hottest_c",      "cpu_percent",
    "power_w",    "fan_rpm",    "battery_percent"};
// The precision the points are kept at: hundredths of a degree, tenths of a percent or watt.
constexpr std::array<int, historySeriesCount> kDecimals{2, 2, 2, 1, 1, 0, 1};

void appendNumber(std::string& out, double value, int decimals) {
    std::array<char, 32> buffer{};
    const auto result = std::to_chars(buffer.data(), buffer.data() + buffer.size(), value,
                                      std::chars_format::fixed, decimals);
    if (result.ec == std::errc()) out.append(buffer.data(), result.ptr);
}

void appendFigure(std::string& out, const std::optional<HistoryFigure>& figure, int decimals,
                  double HistoryFigure::*part) {
    out += ',';
    if (figure) appendNumber(out, (*figure).*part, decimals);
}

}  // namespace

std::string historyCsvHeader() {
    std::string out = "time,level,thermal_state";
    for (const auto name : kNames) {
        out += ',';
        out += name;
    }
    out += ",top_process,resolution_s";
    for (const auto name : kNames) {
        out += ',';
        out += name;
        out += "_min,";
        out += name;
        out += "_max";
    }
    out += '\n';
    return out;
}

std::string csvField(std::string_view text) {
    if (text.find_first_of(",\"\r\n") == std::string_view::npos) return std::string(text);
    std::string out = "\"";
    for (const char c : text) {
        if (c == '"') out += '"';
        out += c;
    }
    out += '"';
    return out;
}

std::string historyCsvLine(const HistoryRow& row) {
    std::string out = rfc3339(Timestamp::fromSeconds(static_cast<double>(row.time)));
    out += ',';
    if (row.level) out += label(*row.level);
    out += ',';
    if (row.thermal) out += thermalStateName(*row.thermal).value_or("");
    for (std::size_t i = 0; i < historySeriesCount; ++i)
        appendFigure(out, row.figures.at(i), kDecimals.at(i), &HistoryFigure::mean);
    out += ',';
    if (row.busiest) out += csvField(*row.busiest);
    out += ',';
    out += std::to_string(row.resolution);
    for (std::size_t i = 0; i < historySeriesCount; ++i) {
        appendFigure(out, row.figures.at(i), kDecimals.at(i), &HistoryFigure::min);
        appendFigure(out, row.figures.at(i), kDecimals.at(i), &HistoryFigure::max);
    }
    out += '\n';
    return out;
}

std::string historyCsv(const std::vector<HistoryRow>& rows) {
    std::string out = historyCsvHeader();
    out.reserve(out.size() + rows.size() * 160);
    for (const auto& row : rows)
        out += historyCsvLine(row);
    return out;
}

}  // namespace velmora
