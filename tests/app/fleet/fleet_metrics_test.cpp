#include <gtest/gtest.h>

#include <sys/stat.h>
#include <unistd.h>
#include <algorithm>
#include <cmath>
#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <fstream>

#include <nlohmann/json.hpp>

#include "app/fleet/exposition_check.hpp"
#include "app/fleet/fleet_metrics.hpp"
#include "app/fleet/metrics_file.hpp"
#include "app/fleet/observed_shutdowner.hpp"
#include "app/fleet/prometheus_text.hpp"
#include "support/temp_dir.hpp"

namespace velmora {
namespace {

using testing::checkExposition;

LiveInputs busyLaptop() {
    LiveInputs in;
    in.thermal = ThermalState::serious;
    in.cpuBusy = 37.5;
    in.coreLoads = std::vector<double>{50.0, 25.0};
    in.gpuLoad = 10.0;
    in.load = 1.25;
    in.memory = MemoryInfo{50.0, 8.0, 16.0, "Normal"};
    in.fans = {{0, 2100.0, std::nullopt, std::nullopt}, {1, 900.0, 500.0, 4000.0}};
    in.power = PowerReading{12.5, "Package power", "RAPL package-0"};
    in.battery = BatteryInfo{87, false, true, -500.0, 12000.0};
    in.sensors = {
        {"coretemp Package id 0", 81.0, "hwmon coretemp Package id 0"},
        {"nvme Composite", 45.0, "hwmon nvme Composite"},
        {"nvme Composite", 41.0, "hwmon nvme Composite"},
        {"Quote \"and\" back\\slash\nnewline", 30.0, "hwmon acpitz temp1"},
        {"RTX \"4090\"", 66.0, "NVML RTX \"4090\""},
    };
    return in;
}

WatchdogFigures counting() {
    WatchdogFigures figures;
    figures.level = 3;
    figures.autoShutdown = true;
    figures.consentRecorded = true;
    figures.countdownRemaining = 7;
    figures.emergencies = 2;
    figures.countdowns = 1;
    figures.shutdownCalls = 1;
    return figures;
}

TEST(PrometheusText, EscapesBackslashQuoteAndLineFeedInLabelValues) {
    EXPECT_EQ(escapeLabelValue("a\\b\"c\nd"), "a\\\\b\\\"c\\nd");
    EXPECT_EQ(escapeLabelValue("°C plain"), "°C plain");
}

TEST(PrometheusText, LeavesOutAbsentSamplesAndFamiliesWithoutSamples) {
    PrometheusText out;
    out.family("velmora_empty_celsius", "gauge", "Nothing here.");
    out.sample(std::nullopt);
    out.family("velmora_one_ratio", "gauge", "Help with a \\ backslash\nand a line.");
    out.sample(0.5, {{"k", "v"}});
    EXPECT_EQ(out.text(),
              "# HELP velmora_one_ratio Help with a \\\\ backslash\\nand a line.\n"
              "# TYPE velmora_one_ratio gauge\n"
              "velmora_one_ratio{k=\"v\"} 0.5\n");
}

TEST(FleetMetrics, FullSnapshotIsValidExpositionWithEveryFigure) {
    const std::vector<ThermalLimit> limits{
        {"/sys/class/hwmon/hwmon1/temp1_input", "fair", 85.0},
        {"/sys/class/hwmon/hwmon1/temp1_input", "serious", 100.0},
        {"NVML GPU 0 RTX", "critical", 89.0}};
    const auto text =
        fleetMetricsText(busyLaptop(), counting(), limits, Timestamp::fromSeconds(1'700'000'000.5));
    const auto check = checkExposition(text);
    EXPECT_TRUE(check.problems.empty()) << ::testing::PrintToString(check.problems) << text;

    const std::string temp = "velmora_sensor_temperature_celsius";
    EXPECT_EQ(check.count(temp), 5U);
    EXPECT_EQ(check.value(temp, {{"sensor", "coretemp Package id 0"},
                                 {"kind", "cpu"},
                                 {"source", "hwmon coretemp Package id 0"}}),
              81.0);
    // Two drives of one kind are told apart, not written twice.
    EXPECT_EQ(check.value(temp, {{"sensor", "nvme Composite"},
                                 {"kind", "ssd"},
                                 {"source", "hwmon nvme Composite"}}),
              45.0);
    EXPECT_EQ(check.value(temp, {{"sensor", "nvme Composite #2"},
                                 {"kind", "ssd"},
                                 {"source", "hwmon nvme Composite"}}),
              41.0);
    EXPECT_EQ(check.value(temp, {{"sensor", "Quote \"and\" back\\slash\nnewline"},
                                 {"kind", "other"},
                                 {"source", "hwmon acpitz temp1"}}),
              30.0);
    EXPECT_EQ(
        check.value(temp,
                    {{"sensor", "RTX \"4090\""}, {"kind", "gpu"}, {"source", "NVML RTX \"4090\""}}),
        66.0);
    EXPECT_EQ(check.value("velmora_thermal_limit_celsius",
                          {{"source", "NVML GPU 0 RTX"}, {"state", "critical"}}),
              89.0);
    EXPECT_EQ(check.value("velmora_heat_level"), 3.0);
    EXPECT_EQ(check.value("velmora_thermal_state", {{"state", "serious"}}), 1.0);
    EXPECT_EQ(check.value("velmora_thermal_state", {{"state", "nominal"}}), 0.0);
    EXPECT_EQ(check.value("velmora_fan_speed_rpm", {{"fan", "1"}}), 900.0);
    EXPECT_EQ(check.value("velmora_power_watts",
                          {{"label", "Package power"}, {"source", "RAPL package-0"}}),
              12.5);
    EXPECT_EQ(check.value("velmora_cpu_busy_ratio"), 0.375);
    EXPECT_EQ(check.value("velmora_cpu_core_busy_ratio", {{"core", "1"}}), 0.25);
    EXPECT_EQ(check.value("velmora_memory_total_bytes"), 16.0 * 1024 * 1024 * 1024);
    EXPECT_EQ(check.value("velmora_battery_charge_ratio"), 0.87);
    EXPECT_EQ(check.value("velmora_on_ac_power"), 1.0);
    EXPECT_EQ(check.value("velmora_auto_shutdown_enabled"), 1.0);
    EXPECT_EQ(check.value("velmora_consent_recorded"), 1.0);
    EXPECT_EQ(check.value("velmora_countdown_remaining_seconds"), 7.0);
    EXPECT_EQ(check.value("velmora_emergencies_total"), 2.0);
    EXPECT_EQ(check.value("velmora_countdowns_total"), 1.0);
    EXPECT_EQ(check.value("velmora_shutdown_calls_total"), 1.0);
    EXPECT_EQ(check.types.at("velmora_shutdown_calls_total"), "counter");
    EXPECT_EQ(check.value("velmora_last_sample_timestamp_seconds"), 1'700'000'000.5);
}

TEST(FleetMetrics, AbsentFiguresAreLeftOutRatherThanWrittenAsZero) {
    const auto text =
        fleetMetricsText(LiveInputs{}, WatchdogFigures{}, {}, Timestamp::fromSeconds(1.0));
    const auto check = checkExposition(text);
    EXPECT_TRUE(check.problems.empty()) << ::testing::PrintToString(check.problems);
    for (const char* absent :
         {"velmora_sensor_temperature_celsius", "velmora_cpu_busy_ratio", "velmora_heat_level",
          "velmora_cpu_core_busy_ratio", "velmora_memory_used_bytes",
          "velmora_battery_charge_ratio", "velmora_countdown_remaining_seconds",
          "velmora_power_watts", "velmora_fan_speed_rpm", "velmora_critical_eta_seconds"}) {
        EXPECT_EQ(check.count(absent), 0U) << absent;
    }
    EXPECT_EQ(check.value("velmora_emergencies_total"), 0.0);  // a count of none is a real 0
}

TEST(FleetMetrics, TheCriticalEtaIsWrittenOnlyWhileTheForecastHasOne) {
    LiveInputs live;
    Forecast forecast;
    forecast.kind = ForecastKind::critical;
    forecast.eta = Seconds(238.6);
    live.forecast = forecast;
    auto check = checkExposition(fleetMetricsText(live, {}, {}, Timestamp::fromSeconds(1.0)));
    EXPECT_TRUE(check.problems.empty()) << ::testing::PrintToString(check.problems);
    EXPECT_EQ(check.value("velmora_critical_eta_seconds"), 239.0);
    forecast.kind = ForecastKind::levelling;
    forecast.eta.reset();
    forecast.levelC = 88.0;
    live.forecast = forecast;
    check = checkExposition(fleetMetricsText(live, {}, {}, Timestamp::fromSeconds(1.0)));
    EXPECT_EQ(check.count("velmora_critical_eta_seconds"), 0U);
}

TEST(FleetMetrics, TheBusiestProcessesAreWrittenWithTheirNamesAsLabels) {
    LiveInputs live;
    auto check = checkExposition(fleetMetricsText(live, {}, {}, Timestamp::fromSeconds(1.0)));
    EXPECT_EQ(check.count("velmora_busiest_process_cores"), 0U);
    live.heatCause = HeatCause{
        {ProcessShare{"cc1plus", 977, 96.0}, ProcessShare{"a \"b\"\nc", 12, 35.0}}, {}, {}, {}};
    const auto text = fleetMetricsText(live, {}, {}, Timestamp::fromSeconds(1.0));
    check = checkExposition(text);
    EXPECT_TRUE(check.problems.empty()) << ::testing::PrintToString(check.problems) << text;
    EXPECT_EQ(check.count("velmora_busiest_process_cores"), 2U);
    EXPECT_NE(text.find(R"(velmora_busiest_process_cores{process="cc1plus",pid="977"} 0.96)"),
              std::string::npos)
        << text;
}

TEST(ExpositionCheck, CatchesWhatTheCollectorWouldRefuse) {
    EXPECT_FALSE(checkExposition("velmora_x 1\n").problems.empty());  // no TYPE
    EXPECT_FALSE(checkExposition("# TYPE a gauge\na{l=\"x\\q\"} 1\n").problems.empty());
    EXPECT_FALSE(checkExposition("# TYPE a gauge\na 1\na 2\n").problems.empty());
    EXPECT_FALSE(checkExposition("# TYPE a_total gauge\na_total 1\n").problems.empty());
    EXPECT_FALSE(checkExposition("# TYPE a counter\na 1\n").problems.empty());
    EXPECT_FALSE(
        checkExposition("# TYPE a gauge\n# TYPE b gauge\na 1\nb 1\na 2\n").problems.empty());
    EXPECT_FALSE(checkExposition("# TYPE aB gauge\naB 1\n").problems.empty());
    EXPECT_FALSE(checkExposition("# TYPE a gauge\na one\n").problems.empty());
    EXPECT_TRUE(checkExposition("# TYPE a gauge\na{l=\"x\\\"y\"} +Inf\n").problems.empty());
}

class MetricsFileTest : public ::testing::Test {
  protected:
    MetricsFile file() {
        return MetricsFile(
            path_, [this](const std::string& line) { logged_.push_back(line); },
            [] {
                return std::vector<ThermalLimit>{{"zone", "fair", 80.0}};
            });
    }
    std::string contents() const {
        std::ifstream in(path_);
        return {std::istreambuf_iterator<char>(in), {}};
    }
    /// What a folder holds: the file alone, no temporary beside it.
    static std::vector<std::string> entries(const std::filesystem::path& dir) {
        std::vector<std::string> names;
        for (const auto& entry : std::filesystem::directory_iterator(dir))
            names.push_back(entry.path().filename().string());
        std::sort(names.begin(), names.end());
        return names;
    }
    static nlohmann::json view(int level, const std::string& state, std::int64_t remaining = 0,
                               bool sim = false) {
        return {{"level", level}, {"state", state},       {"remaining", remaining},
                {"sim", sim},     {"autoShutdown", true}, {"consentNeeded", false}};
    }

    testing::TempDir dir_{"prom"};
    std::filesystem::path path_ = dir_ / "velmora.prom";
    std::vector<std::string> logged_;
};

TEST_F(MetricsFileTest, CountsEmergenciesAndCountdownsOnceEachAndNotSimulations) {
    MetricsFile metrics = file();
    metrics.ticked(view(0, "idle"));
    metrics.ticked(view(4, "countdown", 10));
    metrics.ticked(view(4, "countdown", 9));
    EXPECT_EQ(metrics.figures().countdownRemaining, 9);
    metrics.ticked(view(4, "fired"));
    metrics.shutdownRequested();
    EXPECT_FALSE(metrics.figures().countdownRemaining);
    metrics.ticked(view(2, "idle"));
    metrics.ticked(view(4, "countdown", 10, true));  // a simulated one
    metrics.ticked(view(0, "idle"));
    metrics.ticked(view(4, "countdown", 10));
    EXPECT_EQ(metrics.figures().emergencies, 2U);
    EXPECT_EQ(metrics.figures().countdowns, 2U);
    EXPECT_EQ(metrics.figures().shutdownCalls, 1U);
    EXPECT_TRUE(metrics.figures().consentRecorded);
}

TEST_F(MetricsFileTest, WritesAWholeValidFileAfterEachSampleAndLeavesNoTemporary) {
    MetricsFile metrics = file();
    metrics.ticked(view(1, "idle"));
    metrics.sampled(busyLaptop(), Timestamp::fromSeconds(5));
    const auto check = checkExposition(contents());
    EXPECT_TRUE(check.problems.empty());
    EXPECT_EQ(check.value("velmora_heat_level"), 1.0);
    EXPECT_EQ(check.value("velmora_thermal_limit_celsius", {{"source", "zone"}, {"state", "fair"}}),
              80.0);
    metrics.sampled(LiveInputs{}, Timestamp::fromSeconds(6));
    EXPECT_EQ(checkExposition(contents()).value("velmora_last_sample_timestamp_seconds"), 6.0);
    EXPECT_EQ(entries(path_.parent_path()), std::vector<std::string>{"velmora.prom"});
    EXPECT_TRUE(logged_.empty());
}

TEST_F(MetricsFileTest, AFailedWriteIsLoggedOnceAndItsRecoveryToo) {
    path_ = dir_ / "not-yet" / "velmora.prom";
    MetricsFile metrics = file();
    metrics.sampled(LiveInputs{}, Timestamp::fromSeconds(1));
    metrics.sampled(LiveInputs{}, Timestamp::fromSeconds(2));
    ASSERT_EQ(logged_.size(), 1U);
    EXPECT_EQ(logged_[0],
              "metrics: could not write " + path_.string() + ": No such file or directory");
    std::filesystem::create_directory(dir_ / "not-yet");
    metrics.sampled(LiveInputs{}, Timestamp::fromSeconds(3));
    ASSERT_EQ(logged_.size(), 2U);
    EXPECT_EQ(logged_[1], "metrics: writing " + path_.string() + " again");
    EXPECT_TRUE(std::filesystem::exists(path_));
    EXPECT_EQ(entries(path_.parent_path()), std::vector<std::string>{"velmora.prom"});
}

TEST_F(MetricsFileTest, PromtoolAcceptsTheFile) {
    if (std::system("command -v promtool >/dev/null 2>&1") != 0) {
        GTEST_SKIP() << "promtool is not installed; the exposition checks above stand in for it";
    }
    MetricsFile metrics = file();
    metrics.ticked(view(4, "countdown", 5));
    metrics.sampled(busyLaptop(), Timestamp::fromSeconds(1));
    const std::string command = "promtool check metrics < '" + path_.string() + "'";
    EXPECT_EQ(std::system(command.c_str()), 0);
}

class CountingShutdowner final : public Shutdowner {
  public:
    void shutdown(ShutdownCompletion completion) override {
        ++shutdowns;
        completion(std::nullopt);
    }
    void probe(ProbeCompletion /*completion*/) override { ++probes; }
    int shutdowns = 0;
    int probes = 0;
};

TEST(ObservedShutdowner, TellsOfEveryShutdownCallAndPassesEverythingOn) {
    auto inner = std::make_shared<CountingShutdowner>();
    int told = 0;
    ObservedShutdowner observed(inner, [&] { ++told; });
    bool completed = false;
    observed.shutdown([&](std::optional<ShutdownError> error) { completed = !error; });
    observed.probe([](AutomationOutcome) {});
    EXPECT_EQ(told, 1);
    EXPECT_TRUE(completed);
    EXPECT_EQ(inner->shutdowns, 1);
    EXPECT_EQ(inner->probes, 1);
}

}  // namespace
}  // namespace velmora
