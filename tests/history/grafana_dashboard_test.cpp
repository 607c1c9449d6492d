#include <gtest/gtest.h>

#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <nlohmann/json.hpp>
#include <regex>
#include <set>
#include <string>

namespace velmora {
namespace {

namespace fs = std::filesystem;

fs::path sourceDir() {
    const char* dir = std::getenv("VELMORA_SOURCE_DIR");  // NOLINT(concurrency-mt-unsafe)
    return dir ? fs::path(dir) : fs::current_path();
}

std::string textOf(const fs::path& file) {
    std::ifstream in(file, std::ios::binary);
    return {std::istreambuf_iterator<char>(in), std::istreambuf_iterator<char>()};
}

std::set<std::string> metricNamesIn(const std::string& text, const std::regex& pattern) {
    std::set<std::string> names;
    for (std::sregex_iterator it(text.begin(), text.end(), pattern), end; it != end; ++it)
        names.insert((*it)[1].str());
    return names;
}

/// Every family the metrics file writer names, as string literals in its sources.
std::set<std::string> writtenMetrics() {
    std::set<std::string> names;
    const std::regex literal("\"(velmora_[a-z0-9_]+)\"");
    for (const auto& entry : fs::directory_iterator(sourceDir() / "src/app/fleet")) {
        if (entry.path().extension() != ".cpp") continue;
        names.merge(metricNamesIn(textOf(entry.path()), literal));
    }
    return names;
}

/// Every query text of the dashboard: targets, variables.
void collectQueries(const nlohmann::json& node, std::string& out) {
    if (node.is_object()) {
        for (const auto& [key, value] : node.items()) {
            if (value.is_string() && (key == "expr" || key == "definition" || key == "query")) {
                out += value.get<std::string>() + "\n";
            }
            collectQueries(value, out);
        }
    } else if (node.is_array()) {
        for (const auto& item : node)
            collectQueries(item, out);
    }
}

class GrafanaDashboard : public ::testing::Test {
  protected:
    void SetUp() override {
        const auto text = textOf(sourceDir() / "packaging/grafana/velmora-heat-monitor.json");
        dashboard = nlohmann::json::parse(text, nullptr, false);
        ASSERT_FALSE(dashboard.is_discarded()) << "the dashboard is not valid JSON";
        collectQueries(dashboard, queries);
    }
    nlohmann::json dashboard;
    std::string queries;
};

TEST_F(GrafanaDashboard, ParsesAndEveryPanelHasATitleAPlaceAndAQuery) {
    ASSERT_TRUE(dashboard["panels"].is_array());
    ASSERT_FALSE(dashboard["panels"].empty());
    std::set<int> ids;
    for (const auto& panel : dashboard["panels"]) {
        EXPECT_FALSE(panel.value("title", std::string()).empty());
        EXPECT_TRUE(panel["gridPos"].is_object());
        EXPECT_TRUE(ids.insert(panel.value("id", -1)).second) << "duplicate panel id";
        ASSERT_TRUE(panel["targets"].is_array());
        EXPECT_FALSE(panel["targets"].empty()) << panel["title"];
        for (const auto& target : panel["targets"])
            EXPECT_FALSE(target.value("expr", std::string()).empty()) << panel["title"];
    }
}

TEST_F(GrafanaDashboard, NamesOnlyMetricsTheProgramWrites) {
    const auto written = writtenMetrics();
    ASSERT_GT(written.size(), 10U) << "the metric names were not found in the writer's sources";
    const auto named = metricNamesIn(queries, std::regex("(velmora_[a-z0-9_]+)"));
    ASSERT_FALSE(named.empty());
    for (const auto& name : named)
        EXPECT_TRUE(written.count(name) == 1) << name << " is not written by the metrics file";
}

TEST_F(GrafanaDashboard, ShowsTemperaturesLevelAndCountdowns) {
    for (const char* name :
         {"velmora_sensor_temperature_celsius", "velmora_heat_level",
          "velmora_thermal_limit_celsius", "velmora_countdown_remaining_seconds"}) {
        EXPECT_NE(queries.find(name), std::string::npos) << name;
    }
}

}  // namespace
}  // namespace velmora
