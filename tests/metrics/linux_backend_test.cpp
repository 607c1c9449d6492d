#include "metrics/linux/linux_backend.hpp"

#include <gtest/gtest.h>

#include <algorithm>
#include <chrono>
#include <cstdlib>

#include "metrics/backend_factory.hpp"
#include "metrics/diagnose.hpp"
#include "metrics/fixture_tree.hpp"
#include "metrics/heat_collector.hpp"
#include "metrics/live_model.hpp"

namespace velmora {
namespace {

using namespace std::chrono_literals;

using testing::FixtureTree;

constexpr Timestamp kStart = Timestamp::fromSeconds(1'700'000'000);

bool hasSensor(const LiveInputs& in, const std::string& name) {
    for (const NamedTemp& s : in.sensors) {
        if (s.name == name) return true;
    }
    return false;
}

TEST(LinuxBackend, DiscoversOnceAndRereadsTheOpenFiles) {
    FixtureTree tree("intel_laptop");
    LinuxBackend backend(tree.root());
    backend.prime(kStart);
    EXPECT_EQ(backend.sample(kStart + 1s).cpuTemp->celsius, 62.0);
    tree.write("sys/class/hwmon/hwmon3/temp1_input", "71500\n");
    EXPECT_EQ(backend.sample(kStart + 2s).cpuTemp->celsius, 71.5);
    EXPECT_EQ(backend.discoveries(), 1);
}

TEST(LinuxBackend, SensorUnpluggedMidRunIsDroppedWithoutStoppingTheSample) {
    FixtureTree tree("intel_laptop");
    LinuxBackend backend(tree.root());
    backend.prime(kStart);
    ASSERT_TRUE(hasSensor(backend.sample(kStart + 1s), "nvme Composite"));
    tree.unplug("sys/class/hwmon/hwmon1");
    const LiveInputs during = backend.sample(kStart + 2s);
    EXPECT_FALSE(hasSensor(during, "nvme Composite"));
    EXPECT_EQ(during.cpuTemp->celsius, 62.0);  // everything else still read
    EXPECT_EQ(during.battery->percent, 87);
    const LiveInputs after = backend.sample(kStart + 3s);
    EXPECT_EQ(backend.discoveries(), 2);
    EXPECT_FALSE(hasSensor(after, "nvme Composite"));
    EXPECT_EQ(after.sensors.size(), during.sensors.size());
    EXPECT_EQ(backend.sensorSummary().find("nvme"), std::string::npos);
    backend.sample(kStart + 4s);
    EXPECT_EQ(backend.discoveries(), 2);  // no rediscovery while nothing fails
}

TEST(LinuxBackend, SensorThatAppearsLaterIsFoundByThePeriodicRediscovery) {
    FixtureTree tree("virtual_machine");
    LinuxBackend backend(tree.root());
    backend.prime(kStart);
    tree.write("sys/class/hwmon/hwmon0/name", "drivetemp\n");
    tree.write("sys/class/hwmon/hwmon0/temp1_input", "33000\n");
    EXPECT_TRUE(backend.sample(kStart + 30s).sensors.empty());
    EXPECT_TRUE(backend.sample(kStart + 59900ms).sensors.empty());
    const LiveInputs later = backend.sample(kStart + 60s);
    EXPECT_EQ(later.sensors,
              (std::vector<NamedTemp>{{"drivetemp temp1", 33.0, "hwmon drivetemp temp1"}}));
    EXPECT_EQ(backend.discoveries(), 2);
}

TEST(LinuxBackend, SensorThatAppearsLaterIsFoundByAFailureTriggeredRediscovery) {
    FixtureTree tree("raspberry_pi");
    LinuxBackend backend(tree.root());
    backend.prime(kStart);
    tree.write("sys/class/hwmon/hwmon2/name", "nvme\n");
    tree.write("sys/class/hwmon/hwmon2/temp1_input", "40000\n");
    tree.write("proc/loadavg", "");  // a read that fails
    EXPECT_FALSE(backend.sample(kStart + 1s).load);
    tree.write("proc/loadavg", "0.10 0.10 0.10 1/1 1\n");
    const LiveInputs after = backend.sample(kStart + 2s);
    EXPECT_TRUE(hasSensor(after, "nvme temp1"));
    EXPECT_EQ(after.load, 0.10);
}

// A vanished zone is held, stale, for three samples before it stops counting.
TEST(LinuxBackend, CriticalNeedsTwoSamplesAndAVanishedZoneStopsCountingAfterItsHold) {
    FixtureTree tree("intel_laptop");
    HeatCollector collector(std::make_unique<LinuxBackend>(tree.root()), kStart);
    tree.write("sys/class/thermal/thermal_zone0/temp", "124000\n");  // critical trip 128 °C
    EXPECT_EQ(collector.sample(kStart + 1s).thermal, ThermalState::serious);
    EXPECT_EQ(collector.sample(kStart + 2s).thermal, ThermalState::critical);
    tree.unplug("sys/class/thermal/thermal_zone0");
    for (int held = 1; held <= ThermalDeriver::holdSamples; ++held) {
        EXPECT_EQ(collector.sample(kStart + std::chrono::seconds(2 + held)).thermal,
                  ThermalState::critical)
            << "held sample " << held;
    }
    EXPECT_EQ(collector.sample(kStart + 6s).thermal, ThermalState::nominal);
    EXPECT_EQ(collector.sample(kStart + 7s).thermal, ThermalState::nominal);
    EXPECT_EQ(collector.last()->peakLevel, Level::blowout);
}

TEST(LinuxBackend, RisingThrottleCounterIsSerious) {
    FixtureTree tree("intel_laptop");
    LinuxBackend backend(tree.root());
    backend.prime(kStart);
    EXPECT_EQ(backend.sample(kStart + 1s).thermal, ThermalState::nominal);
    tree.write("sys/devices/system/cpu/cpu3/thermal_throttle/core_throttle_count", "1\n");
    EXPECT_EQ(backend.sample(kStart + 2s).thermal, ThermalState::serious);
    EXPECT_EQ(backend.thermal().drivingSource(), "thermal_throttle");
    EXPECT_EQ(backend.sample(kStart + 3s).thermal, ThermalState::nominal);
}

TEST(LinuxBackend, HwmonLimitRaisesTheStateAndHysteresisHoldsIt) {
    FixtureTree tree("intel_laptop");
    LinuxBackend backend(tree.root());
    backend.prime(kStart);
    const std::string package = "sys/class/hwmon/hwmon3/temp1_input";  // max and crit 100 °C
    tree.write(package, "100000\n");
    EXPECT_EQ(backend.sample(kStart + 1s).thermal, ThermalState::serious);
    tree.write(package, "97500\n");
    EXPECT_EQ(backend.sample(kStart + 2s).thermal, ThermalState::serious);
    tree.write(package, "97000\n");
    EXPECT_EQ(backend.sample(kStart + 3s).thermal, ThermalState::fair);
    EXPECT_EQ(backend.thermal().drivingSource(), tree.path(package));
}

// The sysfs paths (hwmon3, thermal_zone0) are numbered anew at each boot; the names are not.
TEST(LinuxBackend, ThermalLimitsCarryTheNamesTheTemperaturesAreListedUnder) {
    FixtureTree tree("intel_laptop");
    LinuxBackend backend(tree.root());
    backend.prime(kStart);
    const LiveInputs in = backend.sample(kStart + 1s);
    const auto limits = backend.thermalLimits();
    ASSERT_FALSE(limits.empty());
    auto limitOf = [&](const std::string& source, const std::string& state) {
        const auto found = std::find_if(limits.begin(), limits.end(), [&](const ThermalLimit& l) {
            return l.source == source && l.state == state;
        });
        return found != limits.end() ? std::optional(found->celsius) : std::nullopt;
    };
    EXPECT_EQ(limitOf("hwmon coretemp Package id 0", "serious"), 100.0);  // its crit
    EXPECT_EQ(limitOf("thermal acpitz", "critical"), 123.0);  // 5 °C before its critical trip
    for (const ThermalLimit& limit : limits) {
        EXPECT_EQ(limit.source.find("/sys/"), std::string::npos) << limit.source;
    }
    const auto package = std::find_if(in.sensors.begin(), in.sensors.end(), [](const auto& t) {
        return t.source == "hwmon coretemp Package id 0";
    });
    EXPECT_NE(package, in.sensors.end()) << "the limit's name is the temperature's source";
}

TEST(LinuxBackend, ImplausibleReadingIsLeftOutWithoutRediscovery) {
    FixtureTree tree("raspberry_pi");
    LinuxBackend backend(tree.root());
    backend.prime(kStart);
    tree.write("sys/class/hwmon/hwmon0/temp1_input", "-40000\n");
    const LiveInputs in = backend.sample(kStart + 1s);
    EXPECT_TRUE(in.sensors.empty());
    EXPECT_FALSE(in.cpuTemp);
    backend.sample(kStart + 2s);
    EXPECT_EQ(backend.discoveries(), 1);
}

TEST(LinuxBackend, PerCoreLoadsAreAbsentForTheSampleAfterACpuGoesOffline) {
    FixtureTree tree("virtual_machine");
    LinuxBackend backend(tree.root());
    backend.prime(kStart);
    tree.write("proc/stat", "cpu  100 0 0 100 0 0 0 0 0 0\ncpu0 100 0 0 100 0 0 0 0 0 0\n");
    const LiveInputs offline = backend.sample(kStart + 1s);
    EXPECT_FALSE(offline.coreLoads);
    tree.write("proc/stat", "cpu  150 0 0 150 0 0 0 0 0 0\ncpu0 150 0 0 150 0 0 0 0 0 0\n");
    EXPECT_EQ(backend.sample(kStart + 2s).coreLoads, (std::vector<double>{50.0}));
}

TEST(LinuxBackend, WithoutRaplTheBatteryGivesThePower) {
    FixtureTree tree("intel_laptop");
    std::filesystem::remove_all(tree.path("sys/class/powercap"));
    LinuxBackend backend(tree.root());
    backend.prime(kStart);
    const LiveInputs in = backend.sample(kStart + 1s);
    EXPECT_EQ(in.power, (PowerReading{1234.0 * 12345.0 / 1'000'000.0, "Battery discharge",
                                      "power_supply BAT0"}));
}

TEST(LinuxBackend, ARaplDomainNameThatIsNotUtf8StillGivesTheDashboardItsJson) {
    FixtureTree tree("intel_laptop");
    tree.write("sys/class/powercap/intel-rapl:0/name",
               "pack\xFF"
               "age-0\n");
    LinuxBackend backend(tree.root());
    backend.prime(kStart);
    tree.write("sys/class/powercap/intel-rapl:0/energy_uj", "81244567890\n");
    const LiveInputs in = backend.sample(kStart + 1s);
    ASSERT_TRUE(in.power);
    EXPECT_EQ(in.power->source,
              "RAPL pack\xEF\xBF\xBD"
              "age-0");
    EXPECT_NE(LiveModel::json(in), "{}");
}

TEST(LinuxBackend, ChargingBatteryOnAcFromPowerNowAndEnergy) {
    FixtureTree tree("virtual_machine");
    for (const auto& [file, text] :
         std::vector<std::pair<std::string, std::string>>{{"type", "Battery\n"},
                                                          {"status", "Charging\n"},
                                                          {"power_now", "24000000\n"},
                                                          {"voltage_now", "12000000\n"},
                                                          {"energy_now", "30000000\n"},
                                                          {"energy_full", "40000000\n"}}) {
        tree.write("sys/class/power_supply/BAT1/" + file, text);
    }
    tree.write("sys/class/power_supply/ADP1/type", "Mains\n");
    tree.write("sys/class/power_supply/ADP1/online", "1\n");
    LinuxBackend backend(tree.root());
    backend.prime(kStart);
    const LiveInputs in = backend.sample(kStart + 1s);
    EXPECT_EQ(in.battery, (BatteryInfo{75, true, true, 2000.0, 12000.0}));
    EXPECT_EQ(in.power, (PowerReading{24.0, "Battery charge", "power_supply BAT1"}));
}

TEST(LinuxBackend, DeviceBatteriesAreNotTheSystemBattery) {
    FixtureTree tree("virtual_machine");
    tree.write("sys/class/power_supply/hid-mouse-battery/type", "Battery\n");
    tree.write("sys/class/power_supply/hid-mouse-battery/scope", "Device\n");
    tree.write("sys/class/power_supply/hid-mouse-battery/capacity", "40\n");
    LinuxBackend backend(tree.root());
    backend.prime(kStart);
    EXPECT_FALSE(backend.sample(kStart + 1s).battery);
}

TEST(LinuxBackend, PlatformProfileLowPower) {
    FixtureTree tree("intel_laptop");
    LinuxBackend backend(tree.root());
    backend.prime(kStart);
    EXPECT_FALSE(backend.sample(kStart + 1s).lowPower);
    tree.write("sys/firmware/acpi/platform_profile", "low-power\n");
    EXPECT_TRUE(backend.sample(kStart + 2s).lowPower);
}

TEST(LinuxBackend, OddLabelsBecomeValidUtf8) {
    FixtureTree tree("virtual_machine");
    tree.write("sys/class/hwmon/hwmon0/name", "weird\n");
    tree.write("sys/class/hwmon/hwmon0/temp1_input", "40000\n");
    tree.write("sys/class/hwmon/hwmon0/temp1_label", "T\xFF\n");
    HeatCollector collector(std::make_unique<LinuxBackend>(tree.root()), kStart);
    const LiveInputs in = collector.sample(kStart + 1s);
    EXPECT_EQ(in.sensors.at(0).name, "weird T\xEF\xBF\xBD");
}

TEST(LinuxBackend, EmptyRootDirectoryYieldsAnEmptySnapshot) {
    FixtureTree tree("");
    HeatCollector collector(std::make_unique<LinuxBackend>(tree.root()), kStart);
    LiveInputs expected;
    EXPECT_EQ(collector.sample(kStart + 1s), expected);
}

class FakeVendorGpus final : public GpuVendorLibrary {
  public:
    std::string libraryName() const override { return "NVML"; }
    std::vector<VendorGpu> read() override {
        return {{"NVIDIA RTX A2000", 99.0, 12.0}, {"NVIDIA T400", std::nullopt, 81.0}};
    }
};

TEST(LinuxBackend, VendorLibraryGpusJoinTheGpuFigures) {
    FixtureTree tree("amd_desktop");
    LinuxBackend backend(tree.root(), std::make_unique<FakeVendorGpus>());
    backend.prime(kStart);
    const LiveInputs in = backend.sample(kStart + 1s);
    EXPECT_EQ(in.gpuTemp, (TempReading{99.0, "NVML NVIDIA RTX A2000"}));
    EXPECT_EQ(in.gpuLoad, 81.0);
    EXPECT_EQ(in.sensors.front(), (NamedTemp{"NVIDIA RTX A2000", 99.0, "NVML NVIDIA RTX A2000"}));
    EXPECT_NE(backend.sensorSummary().find("NVML: loaded"), std::string::npos);
}

TEST(BackendFactory, RootComesFromVelmoraRoot) {
    ::setenv("VELMORA_ROOT", "/tmp/elsewhere", 1);
    EXPECT_EQ(metricsRootFromEnvironment(), "/tmp/elsewhere");
    ::setenv("VELMORA_ROOT", "", 1);
    EXPECT_EQ(metricsRootFromEnvironment(), "/");
    ::unsetenv("VELMORA_ROOT");
    EXPECT_EQ(metricsRootFromEnvironment(), "/");
}

TEST(BackendFactory, BuildsTheLinuxBackendOverTheRoot) {
    FixtureTree tree("raspberry_pi");
    HeatCollector collector(makePlatformBackend(tree.root()), kStart);
    EXPECT_EQ(collector.sample(kStart + 1s).cpuTemp->source, "hwmon cpu_thermal temp1");
}

TEST(Diagnose, PrintsSummaryTableAndJson) {
    FixtureTree tree("raspberry_pi");
    HeatCollector collector(makePlatformBackend(tree.root()), kStart);
    const std::string report = diagnoseReport(collector, kStart + 1s);
    EXPECT_EQ(report.rfind("Sensors: hwmon: cpu_thermal (1 temp);", 0), 0U) << report;
    EXPECT_NE(report.find("CPU temperature      51.1 °C"), std::string::npos) << report;
    EXPECT_NE(report.find(tree.path("sys/class/hwmon/hwmon0/temp1_input")), std::string::npos);
    EXPECT_NE(report.find("Live JSON:\n{\"battery\":"), std::string::npos) << report;
    EXPECT_TRUE(collector.last());
}

}  // namespace
}  // namespace velmora
