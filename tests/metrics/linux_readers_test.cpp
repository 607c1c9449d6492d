// Machines whose sensors the first readers missed: boards with thermal zones only, old laptops
// with only the ACPI zone, a desktop GPU's power, two batteries, a container without /proc.
#include <gtest/gtest.h>

#include <algorithm>
#include <chrono>

#include "metrics/fixture_tree.hpp"
#include "metrics/heat_collector.hpp"
#include "metrics/linux/linux_backend.hpp"
#include "metrics/live_model.hpp"

namespace velmora {
namespace {

using namespace std::chrono_literals;

using nlohmann::json;
using testing::FixtureTree;

constexpr Timestamp kStart = Timestamp::fromSeconds(1'700'000'000);

/// One fixture machine, primed, moved on by its `next/` overlay and sampled a second later.
class Machine {
  public:
    explicit Machine(const std::string& name)
        : tree_(name), collector_(std::make_unique<LinuxBackend>(tree_.root()), kStart) {
        tree_.advance();
        sample_ = collector_.sample(kStart + 1s);
    }

    const LiveInputs& sample() const { return sample_; }
    json live() const { return LiveModel::dictionary(sample_); }
    const FixtureTree& tree() const { return tree_; }
    HeatCollector& collector() { return collector_; }

    LiveInputs resample(double seconds) {
        return sample_ = collector_.sample(kStart + Seconds(seconds));
    }

    std::vector<SourceRow> rows(const std::string& label) const {
        std::vector<SourceRow> found;
        for (const SourceRow& r : collector_.sourceTable()) {
            if (r.label == label) found.push_back(r);
        }
        return found;
    }

  private:
    FixtureTree tree_;
    HeatCollector collector_;
    LiveInputs sample_;
};

int countNamed(const std::vector<NamedTemp>& sensors, const std::string& prefix) {
    return static_cast<int>(std::count_if(sensors.begin(), sensors.end(), [&](const NamedTemp& s) {
        return s.name.starts_with(prefix);
    }));
}

TEST(LinuxReaders, ArmBoardShowsItsThermalZonesByType) {
    Machine m("arm_board");
    const auto expected = std::vector<NamedTemp>{{"cpu-thermal", 63.5, "thermal cpu-thermal"},
                                                 {"gpu-thermal", 58.2, "thermal gpu-thermal"},
                                                 {"ddr-thermal", 51.0, "thermal ddr-thermal"}};
    EXPECT_EQ(m.sample().sensors, expected);
    EXPECT_EQ(m.sample().cpuTemp, (TempReading{63.5, "thermal cpu-thermal"}));
    EXPECT_EQ(m.sample().gpuTemp, (TempReading{58.2, "thermal gpu-thermal"}));
    const json live = m.live();
    EXPECT_EQ(live["cpuTemp"]["value"], "64°C");
    EXPECT_EQ(live["sensorList"].size(), 3U);
    EXPECT_EQ(live["sensorList"][2]["name"], "ddr-thermal");
    EXPECT_EQ(live["foot"], "Live · 1 s · Temps: thermal");
}

TEST(LinuxReaders, DiagnoseSaysTheCpuFigureIsAZone) {
    Machine m("arm_board");
    const auto rows = m.rows("CPU temperature");
    ASSERT_EQ(rows.size(), 1U);
    EXPECT_EQ(rows[0].value, "63.5 °C");
    EXPECT_EQ(rows[0].source, m.tree().path("sys/class/thermal/thermal_zone0/temp") +
                                  " (a CPU/SoC thermal zone: no CPU sensor found)");
}

TEST(LinuxReaders, ActiveTripsBelowTheTemperatureAreNotDanger) {
    // The fan's trips at 50 and 60 °C are passed; the passive trip at 90 °C is far off.
    Machine m("arm_board");
    EXPECT_EQ(m.sample().thermal, ThermalState::nominal);
    // Trips listed critical, active, passive, active, without hysteresis files, still judge it.
    m.tree().write("sys/class/thermal/thermal_zone0/temp", "81000\n");
    EXPECT_EQ(m.resample(2.0).thermal, ThermalState::fair);
    m.tree().write("sys/class/thermal/thermal_zone0/temp", "90500\n");
    EXPECT_EQ(m.resample(3.0).thermal, ThermalState::serious);
}

TEST(LinuxReaders, OldLaptopFallsBackToItsAcpiZones) {
    Machine m("old_laptop");
    const auto expected =
        std::vector<NamedTemp>{{"acpitz (thermal_zone1)", 61.0, "thermal acpitz (thermal_zone1)"},
                               {"acpitz (thermal_zone0)", 56.0, "thermal acpitz (thermal_zone0)"}};
    EXPECT_EQ(m.sample().sensors, expected);
    EXPECT_EQ(m.sample().cpuTemp, (TempReading{61.0, "thermal acpitz (thermal_zone1)"}));
    EXPECT_EQ(m.sample().peakCpuTemp, 61.0);
    EXPECT_EQ(m.sample().thermal, ThermalState::nominal);
    const auto rows = m.rows("CPU temperature");
    ASSERT_EQ(rows.size(), 1U);
    EXPECT_TRUE(rows[0].source.ends_with(
        " (the ACPI thermal zone: no CPU sensor or CPU/SoC zone found, so it may read the board "
        "rather than the CPU)"))
        << rows[0].source;
    EXPECT_EQ(m.live()["cpuTemp"]["source"], "thermal acpitz (thermal_zone1)");
}

TEST(LinuxReaders, OldLaptopBatteryThatSaysUnknownOnAcIsOnAc) {
    Machine m("old_laptop");
    ASSERT_TRUE(m.sample().battery);
    EXPECT_EQ(m.sample().battery->percent, 97);  // 4268000 of 4400000 µAh
    EXPECT_EQ(m.sample().battery->onAC, true);
    EXPECT_EQ(m.sample().battery->charging, false);
    EXPECT_EQ(m.live()["battery"]["state"], "On AC");
    ASSERT_EQ(m.sample().batteries.size(), 1U);
    EXPECT_EQ(m.sample().batteries[0].status, "Unknown");
}

TEST(LinuxReaders, ZoneMirroredIntoHwmonIsListedOnce) {
    Machine m("gpu_desktop");
    EXPECT_EQ(countNamed(m.sample().sensors, "acpitz"), 1);
    const auto expected =
        std::vector<NamedTemp>{{"coretemp Package id 0", 54.0, "hwmon coretemp Package id 0"},
                               {"amdgpu junction", 53.0, "hwmon amdgpu junction"},
                               {"coretemp Core 0", 51.0, "hwmon coretemp Core 0"},
                               {"amdgpu mem", 50.0, "hwmon amdgpu mem"},
                               {"amdgpu edge", 49.0, "hwmon amdgpu edge"},
                               {"acpitz temp1", 27.8, "hwmon acpitz temp1"}};
    EXPECT_EQ(m.sample().sensors, expected);
    EXPECT_EQ(m.sample().cpuTemp, (TempReading{54.0, "hwmon coretemp Package id 0"}));
    // A CPU sensor needs no explanation.
    EXPECT_EQ(m.rows("CPU temperature")[0].source,
              m.tree().path("sys/class/hwmon/hwmon1/temp1_input"));
}

TEST(LinuxReaders, DesktopGpuPowerIsReadAndLabelledAsTheGpus) {
    Machine m("gpu_desktop");
    const PowerReading gpu{32.114, "GPU power", "hwmon amdgpu PPT"};
    EXPECT_EQ(m.sample().power, gpu);
    EXPECT_EQ(m.sample().powerSources, std::vector<PowerReading>{gpu});
    const json live = m.live();
    EXPECT_EQ(live["power"]["value"], "32.1 W");
    EXPECT_EQ(live["power"]["label"], "GPU power");
    EXPECT_EQ(live["power"]["source"], "hwmon amdgpu PPT");
    EXPECT_EQ(
        live["powerList"],
        (json::array(
            {{{"label", "GPU power"}, {"value", "32.1 W"}, {"source", "hwmon amdgpu PPT"}}})));
    const auto rows = m.rows("Power source");
    ASSERT_EQ(rows.size(), 1U);
    EXPECT_EQ(rows[0], (SourceRow{"Power source", "32.1 W GPU power", "REAL live",
                                  "hwmon amdgpu PPT: " +
                                      m.tree().path("sys/class/hwmon/hwmon2/power1_average")}));
    EXPECT_EQ(m.rows("Power")[0].value, "32.1 W GPU power");
}

TEST(LinuxReaders, GpuPowerStandsBesideThePackageAndTheBattery) {
    FixtureTree tree("gpu_desktop");
    tree.write("sys/class/powercap/intel-rapl:0/name", "package-0\n");
    tree.write("sys/class/powercap/intel-rapl:0/energy_uj", "1000000000\n");
    tree.write("sys/class/powercap/intel-rapl:0/max_energy_range_uj", "262143328850\n");
    HeatCollector collector(std::make_unique<LinuxBackend>(tree.root()), kStart);
    tree.write("sys/class/powercap/intel-rapl:0/energy_uj", "1021500000\n");
    const LiveInputs in = collector.sample(kStart + 1s);
    ASSERT_EQ(in.powerSources.size(), 2U);
    EXPECT_EQ(in.powerSources[0].source, "RAPL package-0");
    EXPECT_DOUBLE_EQ(in.powerSources[0].watts, 21.5);
    EXPECT_EQ(in.powerSources[1], (PowerReading{32.114, "GPU power", "hwmon amdgpu PPT"}));
    // The headline stays the CPU package's.
    EXPECT_EQ(in.power, in.powerSources[0]);
}

TEST(LinuxReaders, DualBatteryOnAcIsOnAcWithEveryPackListed) {
    Machine m("thinkpad_dual_ac");
    const auto& packs = m.sample().batteries;
    ASSERT_EQ(packs.size(), 2U);
    EXPECT_EQ(packs[0].name, "BAT0");
    EXPECT_EQ(packs[0].status, "Not charging");
    EXPECT_EQ(packs[0].info.percent, 80);
    EXPECT_EQ(packs[1].name, "BAT1");
    EXPECT_EQ(packs[1].status, "Full");
    EXPECT_EQ(packs[1].info.percent, 100);
    ASSERT_TRUE(m.sample().battery);
    // (19.2 + 71.8) of (24.0 + 71.8) Wh, not the plain mean of 80 and 100.
    EXPECT_EQ(m.sample().battery->percent, 95);
    EXPECT_EQ(m.sample().battery->onAC, true);
    EXPECT_EQ(m.sample().battery->charging, false);
    EXPECT_FALSE(m.sample().power);
    const json live = m.live();
    EXPECT_EQ(live["battery"]["value"], "95%");
    EXPECT_EQ(live["battery"]["state"], "On AC");
    ASSERT_EQ(live["batteryList"].size(), 2U);
    EXPECT_EQ(live["batteryList"][0]["state"], "Not charging");
    EXPECT_EQ(live["batteryList"][1]["value"], "100%");
    EXPECT_EQ(m.rows("Battery BAT0")[0].value, "80% Not charging");
    EXPECT_EQ(m.rows("Battery BAT1")[0].value, "100% Full");
}

TEST(LinuxReaders, DualBatteryDischargingIsOnBattery) {
    Machine m("thinkpad_dual_discharging");
    ASSERT_TRUE(m.sample().battery);
    // (19.2 + 29.438) of (24.0 + 71.8) Wh.
    EXPECT_EQ(m.sample().battery->percent, 51);
    EXPECT_EQ(m.sample().battery->onAC, false);
    EXPECT_EQ(m.sample().battery->charging, false);
    ASSERT_EQ(m.sample().batteries.size(), 2U);
    EXPECT_EQ(m.sample().batteries[0].status, "Unknown");
    ASSERT_TRUE(m.sample().batteries[1].info.amperageMA);
    EXPECT_NEAR(*m.sample().batteries[1].info.amperageMA, -850.0, 1e-9);
    ASSERT_TRUE(m.sample().power);
    EXPECT_NEAR(m.sample().power->watts, 9.775, 1e-9);
    EXPECT_EQ(m.sample().power->label, "Battery discharge");
    EXPECT_EQ(m.sample().power->source, "power_supply BAT1");
    EXPECT_EQ(m.sample().powerSources.size(), 1U);
    const json live = m.live();
    EXPECT_EQ(live["battery"]["state"], "On battery");
    EXPECT_EQ(live["batteryList"][1]["state"], "Discharging");
    EXPECT_EQ(live["batteryList"][1]["value"], "41%");
    EXPECT_EQ(m.rows("Battery BAT1")[0].value, "41% Discharging");
}

TEST(LinuxReaders, DualBatterySummaryNamesBothPacks) {
    FixtureTree tree("thinkpad_dual_ac");
    LinuxBackend backend(tree.root());
    EXPECT_NE(backend.sensorSummary().find("; battery: BAT0, BAT1; AC: AC;"), std::string::npos)
        << backend.sensorSummary();
}

TEST(LinuxReaders, ContainerWithoutProcHasNoCpuLoadOrMemoryFigures) {
    Machine m("container");
    const LiveInputs& in = m.sample();
    EXPECT_FALSE(in.cpuBusy);
    EXPECT_FALSE(in.coreLoads);
    EXPECT_FALSE(in.load);
    EXPECT_FALSE(in.memory);
    EXPECT_FALSE(in.ramUsed);
    EXPECT_FALSE(in.memPressure);
    EXPECT_TRUE(in.cpuHistory.empty());
    EXPECT_EQ(in.cores, 4);
    EXPECT_EQ(in.cpuTemp, (TempReading{45.75, "hwmon k10temp Tctl"}));
    const json live = m.live();
    for (const char* key : {"cpu", "ram", "load", "memPressure"}) {
        EXPECT_EQ(live[key]["value"], "n/a") << key;
        EXPECT_EQ(live[key]["ok"], false) << key;
    }
    EXPECT_EQ(live["ramDetail"], "n/a");
    EXPECT_EQ(live["coreLoads"], json::array());
    for (const char* label : {"CPU busy", "Per-core CPU", "Load average", "Memory used"}) {
        EXPECT_EQ(m.rows(label)[0].status, "REAL absent") << label;
    }
}

}  // namespace
}  // namespace velmora
