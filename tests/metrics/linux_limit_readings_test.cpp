// The forecast's input on Linux: each source of the derived state that has a critical limit,
// read against it, and the collector following the one nearest its limit.
#include <gtest/gtest.h>

#include <algorithm>
#include <chrono>
#include <memory>
#include <string>

#include "metrics/fixture_tree.hpp"
#include "metrics/heat_collector.hpp"
#include "metrics/linux/linux_backend.hpp"

namespace velmora {
namespace {

using namespace std::chrono_literals;
using testing::FixtureTree;

constexpr Timestamp kStart = Timestamp::fromSeconds(1'700'000'000);

void addCpu(const FixtureTree& tree, int millidegrees) {
    tree.write("sys/class/hwmon/hwmon0/name", "coretemp\n");
    tree.write("sys/class/hwmon/hwmon0/temp1_label", "Package id 0\n");
    tree.write("sys/class/hwmon/hwmon0/temp1_input", std::to_string(millidegrees) + "\n");
    tree.write("sys/class/hwmon/hwmon0/temp1_crit", "100000\n");
    tree.write("sys/class/hwmon/hwmon0/temp1_emergency", "105000\n");
}

void addDrive(const FixtureTree& tree) {
    tree.write("sys/class/hwmon/hwmon1/name", "nvme\n");
    tree.write("sys/class/hwmon/hwmon1/temp1_label", "Composite\n");
    tree.write("sys/class/hwmon/hwmon1/temp1_input", "45000\n");
    tree.write("sys/class/hwmon/hwmon1/temp1_emergency", "85000\n");
    // A limit below critical only: no critical limit, so nothing to forecast.
    tree.write("sys/class/hwmon/hwmon2/name", "acpi_fan\n");
    tree.write("sys/class/hwmon/hwmon2/temp1_input", "45000\n");
    tree.write("sys/class/hwmon/hwmon2/temp1_max", "70000\n");
}

TEST(LinuxLimitReadings, EachSourceWithACriticalLimitIsReadAgainstIt) {
    FixtureTree tree("");
    addCpu(tree, 61000);
    addDrive(tree);
    LinuxBackend backend(tree.root());
    backend.prime(kStart);
    backend.sample(kStart + 1s);
    auto readings = backend.limitReadings();
    std::sort(readings.begin(), readings.end(),
              [](const LimitReading& a, const LimitReading& b) { return a.limitC > b.limitC; });
    ASSERT_EQ(readings.size(), 2U);
    EXPECT_EQ(readings[0].label, "CPU");
    EXPECT_EQ(readings[0].celsius, 61.0);
    EXPECT_EQ(readings[0].limitC, 105.0);
    EXPECT_NE(readings[0].id.find("hwmon0/temp1_input"), std::string::npos);
    EXPECT_EQ(readings[1].label, "nvme Composite");
    EXPECT_EQ(readings[1].limitC, 85.0);
}

TEST(LinuxLimitReadings, TheCollectorForecastsTheRisingCpuAndLogsItOnce) {
    FixtureTree tree("");
    addCpu(tree, 60000);
    addDrive(tree);
    MonoTime mono = MonoTime::fromSeconds(1000);
    HeatCollector collector(std::make_unique<LinuxBackend>(tree.root()), kStart);
    collector.monoClock = [&mono] { return mono; };
    std::vector<std::string> lines;
    std::optional<Forecast> last;
    // 60 °C rising half a degree a second toward the 105 °C emergency limit.
    for (int second = 1; second <= 60; ++second) {
        tree.write("sys/class/hwmon/hwmon0/temp1_input",
                   std::to_string(60000 + 500 * second) + "\n");
        mono = MonoTime::fromSeconds(1000 + second);
        last = collector.sample(kStart + std::chrono::seconds(second)).forecast;
        for (std::string& line : collector.takeNotices())
            lines.push_back(std::move(line));
    }
    ASSERT_TRUE(last.has_value());
    EXPECT_EQ(last->kind, ForecastKind::critical);
    EXPECT_EQ(last->source, "CPU");
    EXPECT_EQ(last->limitC, 105.0);
    // 90 °C at 60 s, 15 °C to go at 0.5 °C a second.
    ASSERT_TRUE(last->eta.has_value());
    EXPECT_NEAR(last->eta->count(), 30.0, 3.0);
    ASSERT_EQ(std::count_if(lines.begin(), lines.end(),
                            [](const std::string& l) { return l.rfind("forecast:", 0) == 0; }),
              1);
    const auto logged = std::find_if(lines.begin(), lines.end(), [](const std::string& l) {
        return l.rfind("forecast: critical in about ", 0) == 0;
    });
    ASSERT_NE(logged, lines.end());
    EXPECT_NE(logged->find("(CPU "), std::string::npos) << *logged;
    EXPECT_NE(logged->find("rising 30.0 °C/min; limit 105 °C)"), std::string::npos) << *logged;
}

}  // namespace
}  // namespace velmora
