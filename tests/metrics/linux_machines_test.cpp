#include <gtest/gtest.h>

#include <chrono>

#include "metrics/fixture_tree.hpp"
#include "metrics/heat_collector.hpp"
#include "metrics/linux/linux_backend.hpp"

namespace velmora {
namespace {

using namespace std::chrono_literals;

using testing::FixtureTree;

constexpr Timestamp kStart = Timestamp::fromSeconds(1'700'000'000);

/// Primes on the fixture as checked in, moves the tree on by its `next/` overlay, then takes
/// the one sample a second later.
LiveInputs sampleMachine(const FixtureTree& tree) {
    HeatCollector collector(std::make_unique<LinuxBackend>(tree.root()), kStart);
    tree.advance();
    return collector.sample(kStart + 1s);
}

// The same arithmetic as the readers, so that expectations are exact.
MemoryInfo memoryOf(double totalKiB, double availableKiB, std::optional<std::string> pressure) {
    const double used = totalKiB - availableKiB;
    return {used / totalKiB * 100.0, used / 1048576.0, totalKiB / 1048576.0, std::move(pressure)};
}

double percent(double busy, double total) {
    return busy / total * 100.0;
}

NamedTemp hwmon(const std::string& name, double milli) {
    return {name, milli / 1000.0, "hwmon " + name};
}

NamedTemp zone(const std::string& type, double milli) {
    return {type, milli / 1000.0, "thermal " + type};
}

TEST(LinuxMachines, IntelLaptopWithCoretempAcpitzNvmeBatteryAcAndThinkpadFan) {
    FixtureTree tree("intel_laptop");
    LiveInputs e;
    e.thermal = ThermalState::nominal;
    e.cpuBusy = percent(200, 800);
    e.load = 0.52;
    e.cores = 8;
    e.memory = memoryOf(16110524, 9876543, "Normal");
    e.ramUsed = e.memory->usedPercent;
    e.memPressure = "Normal";
    e.cpuTemp = TempReading{62.0, "hwmon coretemp Package id 0"};
    e.batteryTemp = TempReading{30.1, "power_supply BAT0"};
    e.peakLevel = Level::ok;
    e.peakCpuTemp = 62.0;
    e.cpuHistory = {percent(200, 800)};
    e.coreLoads = std::vector<double>{50, 25, 10, 75, 0, 20, 5, 15};
    e.fans = {{0, 2650.0, std::nullopt, std::nullopt}};
    e.power = PowerReading{12.5, "Package power", "RAPL package-0"};
    e.battery = BatteryInfo{87, false, false, -1234.0, 12345.0};
    // The acpitz zone is already the acpitz chip; the package zone has no chip of its own.
    e.sensors = {hwmon("coretemp Package id 0", 62000), hwmon("coretemp Core 1", 62000),
                 zone("x86_pkg_temp", 62000),           hwmon("coretemp Core 0", 58000),
                 hwmon("coretemp Core 3", 57000),       hwmon("coretemp Core 2", 55000),
                 hwmon("acpitz temp1", 48000),          hwmon("thinkpad temp1", 47000),
                 hwmon("nvme Sensor 1", 41850),         hwmon("nvme Composite", 38850),
                 {"BAT0", 30.1, "power_supply BAT0"}};
    // 1234 mA at 12.345 V, by the same arithmetic as the readers.
    e.powerSources = {*e.power, batteryPower(*e.battery, "power_supply BAT0").value()};
    const double volts = 11580000 / 1e6;
    e.batteries = {BatteryPack{.name = "BAT0",
                               .status = "Discharging",
                               .info = *e.battery,
                               .energyNowWh = 4512000 / 1e6 * volts,
                               .energyFullWh = 5186000 / 1e6 * volts,
                               .source = "power_supply BAT0"}};
    EXPECT_EQ(sampleMachine(tree), e);
}

TEST(LinuxMachines, AmdDesktopWithK10tempAmdgpuAndTwoFans) {
    FixtureTree tree("amd_desktop");
    LiveInputs e;
    e.thermal = ThermalState::fair;  // the GPU junction is within 15 °C of its critical mark
    e.cpuBusy = percent(720, 1600);
    e.load = 9.86;
    e.cores = 16;
    e.memory = memoryOf(32791260, 12582912, "Warning");
    e.ramUsed = e.memory->usedPercent;
    e.memPressure = "Warning";
    e.cpuTemp = TempReading{61.25, "hwmon k10temp Tdie"};  // Tctl carries an offset
    e.gpuTemp = TempReading{96.0, "hwmon amdgpu junction"};
    e.peakLevel = Level::warm;
    e.peakCpuTemp = 61.25;
    e.cpuHistory = {percent(720, 1600)};
    std::vector<double> cores;
    for (int k = 0; k < 16; ++k)
        cores.push_back(percent(k * 6, 100));
    e.coreLoads = cores;
    e.gpuLoad = 37.0;
    e.fans = {{0, 1180.0, 0.0, 3300.0}, {1, 912.0, 0.0, std::nullopt}};
    e.sensors = {hwmon("amdgpu junction", 96000), hwmon("k10temp Tctl", 71250),
                 hwmon("k10temp Tdie", 61250),    hwmon("k10temp Tccd1", 59500),
                 hwmon("amdgpu mem", 54000),      hwmon("amdgpu edge", 52000),
                 hwmon("nct6798 SYSTIN", 34000)};
    // Without readable RAPL or a battery, the GPU's own figure is the power shown.
    e.power = PowerReading{112.0, "GPU power", "hwmon amdgpu power1_average"};
    e.powerSources = {*e.power};
    EXPECT_EQ(sampleMachine(tree), e);
}

TEST(LinuxMachines, RaspberryPiWithCpuThermalOnly) {
    FixtureTree tree("raspberry_pi");
    LiveInputs e;
    e.cpuBusy = percent(140, 400);
    e.load = 0.08;
    e.cores = 4;
    e.memory = memoryOf(3884164, 3297740, std::nullopt);  // no PSI on this kernel
    e.ramUsed = e.memory->usedPercent;
    e.cpuTemp = TempReading{51.121, "hwmon cpu_thermal temp1"};
    e.peakCpuTemp = 51.121;
    e.cpuHistory = {percent(140, 400)};
    e.coreLoads = std::vector<double>{30, 45, 60, 5};
    e.sensors = {hwmon("cpu_thermal temp1", 51121)};
    EXPECT_EQ(sampleMachine(tree), e);
}

TEST(LinuxMachines, VirtualMachineWithNothing) {
    FixtureTree tree("virtual_machine");
    LiveInputs e;
    e.cpuBusy = percent(16, 200);
    e.load = 0.0;
    e.cores = 2;
    e.memory = memoryOf(2014880, 1473024, "Normal");
    e.ramUsed = e.memory->usedPercent;
    e.memPressure = "Normal";
    e.cpuHistory = {percent(16, 200)};
    e.coreLoads = std::vector<double>{12, 4};
    EXPECT_EQ(sampleMachine(tree), e);
}

TEST(LinuxMachines, IntelLaptopSummary) {
    FixtureTree tree("intel_laptop");
    LinuxBackend backend(tree.root());
    EXPECT_EQ(backend.sensorSummary(),
              "hwmon: acpitz (1 temp), nvme (2 temps), thinkpad (1 temp, 1 fan), coretemp (5 "
              "temps); thermal zones: 2 (acpitz, x86_pkg_temp), 3 trip points; thermal state "
              "from: 8 temperatures with limits, 16 throttle counters; battery: BAT0; AC: AC; "
              "RAPL: package-0; GPU busy files: 0; NVML: not loaded");
}

TEST(LinuxMachines, VirtualMachineSummarySaysTheStateStaysNominal) {
    FixtureTree tree("virtual_machine");
    LinuxBackend backend(tree.root());
    EXPECT_EQ(backend.sensorSummary(),
              "hwmon: none; thermal zones: none; thermal state from: nothing (it stays Nominal); "
              "battery: none; AC: none; RAPL: not readable; GPU busy files: 0; NVML: not loaded");
}

TEST(LinuxMachines, SourceTableNamesTheLinuxFiles) {
    FixtureTree tree("intel_laptop");
    HeatCollector collector(std::make_unique<LinuxBackend>(tree.root()), kStart);
    tree.advance();
    collector.sample(kStart + 1s);
    const auto rows = collector.sourceTable();
    // Twelve metrics, then each power source and each battery.
    ASSERT_EQ(rows.size(), 15U);
    EXPECT_EQ(rows[0].value, "Nominal");
    EXPECT_EQ(rows[1], (SourceRow{"CPU busy", "25%", "REAL live", tree.root() + "/proc/stat"}));
    EXPECT_EQ(rows[6], (SourceRow{"CPU temperature", "62.0 °C", "REAL live",
                                  tree.path("sys/class/hwmon/hwmon3/temp1_input")}));
    EXPECT_EQ(rows[8].source, tree.path("sys/class/power_supply/BAT0/temp"));
    EXPECT_EQ(rows[10], (SourceRow{"Fan RPM", "2650 rpm", "REAL live",
                                   tree.path("sys/class/hwmon/hwmon2/fan1_input")}));
    EXPECT_EQ(rows[11], (SourceRow{"Power", "12.5 W Package power", "REAL live",
                                   tree.path("sys/class/powercap/intel-rapl:0/energy_uj")}));
    EXPECT_EQ(rows[12].label, "Power source");
    EXPECT_EQ(rows[13], (SourceRow{"Power source", "15.2 W Battery discharge", "REAL live",
                                   "power_supply BAT0: " +
                                       tree.path("sys/class/power_supply/BAT0/current_now")}));
    EXPECT_EQ(rows[14],
              (SourceRow{"Battery BAT0", "87% Discharging", "REAL live", "power_supply BAT0"}));
}

}  // namespace
}  // namespace velmora
