#include <gtest/gtest.h>

#include <sstream>

#include "store/history_csv.hpp"

namespace velmora {
namespace {

std::vector<std::string> fieldsOf(const std::string& line) {
    std::vector<std::string> fields;
    std::string field;
    bool quoted = false;
    for (std::size_t i = 0; i < line.size(); ++i) {
        const char c = line[i];
        if (quoted && c == '"' && i + 1 < line.size() && line[i + 1] == '"') {
            field += '"';
            ++i;
        } else if (c == '"') {
            quoted = !quoted;
        } else if (c == ',' && !quoted) {
            fields.push_back(field);
            field.clear();
        } else if (c != '\n' || quoted) {
            field += c;
        }
    }
    fields.push_back(field);
    return fields;
}

HistoryRow rowAt(std::int64_t time) {
    HistoryRow row;
    row.time = time;
    row.resolution = 60;
    row.level = Level::extreme;
    row.thermal = ThermalState::serious;
    row.figures.at(static_cast<std::size_t>(HistorySeries::hottest)) =
        HistoryFigure{90, 96.256, 99.5};
    row.figures.at(static_cast<std::size_t>(HistorySeries::cpuPercent)) =
        HistoryFigure{50, 75.04, 100};
    return row;
}

TEST(HistoryCsv, TheHeaderBeginsWithTheFixedColumns) {
    EXPECT_EQ(historyCsvHeader().rfind(
                  "time,level,thermal_state,cpu_temp_c,gpu_temp_c,hottest_c,cpu_percent,power_w,"
                  "fan_rpm,battery_percent,top_process,",
                  0),
              0U);
    EXPECT_EQ(historyCsvHeader().back(), '\n');
}

TEST(HistoryCsv, ARowHasUtcTimeLevelStateMeansAndEmptyFieldsForAbsentFigures) {
    const auto fields = fieldsOf(historyCsvLine(rowAt(1'790'000'000)));
    const auto header = fieldsOf(historyCsvHeader());
    ASSERT_EQ(fields.size(), header.size());
    EXPECT_EQ(fields[0], "2026-09-21T14:13:20Z");
    EXPECT_EQ(fields[1], "EXTREME HEAT");
    EXPECT_EQ(fields[2], "serious");
    EXPECT_EQ(fields[3], "") << "no CPU temperature";
    EXPECT_EQ(fields[4], "");
    EXPECT_EQ(fields[5], "96.26");
    EXPECT_EQ(fields[6], "75.0");
    EXPECT_EQ(fields[10], "") << "no busiest process";
    EXPECT_EQ(fields[11], "60");
    EXPECT_EQ(header[16], "hottest_c_min");
    EXPECT_EQ(fields[16], "90.00");
    EXPECT_EQ(fields[17], "99.50");
}

TEST(HistoryCsv, NamesAreQuotedAsCsvRequires) {
    auto row = rowAt(1'790'000'000);
    row.busiest = "evil, \"quoted\"\nname";
    const auto line = historyCsvLine(row);
    EXPECT_NE(line.find(",\"evil, \"\"quoted\"\"\nname\","), std::string::npos) << line;
    EXPECT_EQ(fieldsOf(line)[10], "evil, \"quoted\"\nname");
    EXPECT_EQ(csvField("cc1plus"), "cc1plus");
    EXPECT_EQ(csvField("-bash"), "-bash");
}

TEST(HistoryCsv, TheExportIsTheHeaderThenOneLinePerRowInOrder) {
    const auto text = historyCsv({rowAt(100), rowAt(160)});
    std::istringstream in(text);
    std::vector<std::string> lines;
    for (std::string line; std::getline(in, line);)
        lines.push_back(line);
    ASSERT_EQ(lines.size(), 3U);
    EXPECT_EQ(lines[1].substr(0, 20), "1970-01-01T00:01:40Z");
    EXPECT_EQ(lines[2].substr(0, 20), "1970-01-01T00:02:40Z");
}

}  // namespace
}  // namespace velmora
