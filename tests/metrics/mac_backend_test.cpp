#include "metrics/macos/mac_backend.hpp"

#include <gtest/gtest.h>

#include "metrics/fakes/fake_hid.hpp"
#include "metrics/fakes/fake_host.hpp"
#include "metrics/fakes/fake_registry.hpp"
#include "metrics/fakes/fake_smc.hpp"
#include "metrics/macos/battery_temperature.hpp"

namespace velmora {
namespace {

using namespace velmora::testing;

struct MacRig {
    std::shared_ptr<FakeHostState> host = std::make_shared<FakeHostState>();
    std::shared_ptr<FakeRegistryState> registry = std::make_shared<FakeRegistryState>();
    std::shared_ptr<FakeHIDState> hid = std::make_shared<FakeHIDState>();
    std::shared_ptr<FakeSMCState> smc = std::make_shared<FakeSMCState>();
    bool withSMC = true;

    std::unique_ptr<MacBackend> build() {
        MacPorts ports{std::make_unique<FakeHost>(host), std::make_unique<FakeProcessInfo>(host),
                       std::make_unique<FakeRegistry>(registry), std::make_unique<FakeHID>(hid),
                       withSMC ? std::make_unique<FakeSMCTransport>(smc) : nullptr};
        return std::make_unique<MacBackend>(std::move(ports));
    }
};

TEST(MacBackend, EqualTemperaturesListSmcKeysThenHidSensors) {
    MacRig rig;
    rig.smc->add("TC0P", "sp78", sp78(50));
    rig.smc->add("TG0D", "sp78", sp78(50));
    rig.hid->add("PMU tdie1", 50.0);
    const auto backend = rig.build();
    const std::vector<NamedTemp> expected{{"TC0P", 50.0, "SMC TC0P"},
                                          {"TG0D", 50.0, "SMC TG0D"},
                                          {"PMU tdie1", 50.0, "IOHID PMU tdie1"}};
    EXPECT_EQ(backend->sample(Timestamp{}).sensors, expected);
}

TEST(MacBackend, SensorsAreHottestFirstWithTheBatteryLast) {
    MacRig rig;
    rig.smc->add("TC0P", "sp78", sp78(40));
    rig.hid->add("NAND CH0 temp", 45.0);
    rig.registry->services["AppleSmartBattery"] = {{{"Temperature", std::int64_t{4500}}}};
    const auto sensors = rig.build()->sample(Timestamp{}).sensors;
    const std::vector<NamedTemp> expected{{"NAND CH0 temp", 45.0, "IOHID NAND CH0 temp"},
                                          {"Battery", 45.0, "Battery (IORegistry)"},
                                          {"TC0P", 40.0, "SMC TC0P"}};
    EXPECT_EQ(sensors, expected);
}

TEST(MacBackend, SmcTemperaturesComeFirstAndHidFillsGaps) {
    MacRig rig;
    rig.smc->add("TC0P", "sp78", sp78(60));
    rig.hid->add("PMU tdie1", 70.0);
    rig.hid->add("GPU MTR Temp Sensor1", 55.0);
    rig.hid->add("GPU MTR Temp Sensor4", 57.0);
    const LiveInputs in = rig.build()->sample(Timestamp{});
    EXPECT_EQ(in.cpuTemp, (TempReading{60.0, "SMC TC0P"}));
    EXPECT_EQ(in.gpuTemp, (TempReading{57.0, "IOHID GPU MTR Temp Sensor4"}));
}

TEST(MacBackend, WithoutSmcHidGivesCpuAndGpuWithTiesToTheEarlier) {
    MacRig rig;
    rig.withSMC = false;
    rig.hid->add("PMU tdie1", 61.0);
    rig.hid->add("PMU tdie2", 61.0);
    const LiveInputs in = rig.build()->sample(Timestamp{});
    EXPECT_EQ(in.cpuTemp, (TempReading{61.0, "IOHID PMU tdie1"}));
    EXPECT_EQ(in.gpuTemp, std::nullopt);
}

TEST(MacBackend, BatteryTemperatureFallsBackToTheFirstHidBatterySensor) {
    MacRig rig;
    rig.hid->add("gas gauge battery", 31.0);
    rig.hid->add("battery 2", 35.0);
    EXPECT_EQ(rig.build()->sample(Timestamp{}).batteryTemp,
              (TempReading{31.0, "IOHID gas gauge battery"}));
}

TEST(MacBackend, ReadsEverySourceIntoTheSnapshot) {
    MacRig rig;
    rig.host->thermal = ThermalState::serious;
    rig.host->lowPower = true;
    rig.host->activeProcessors = 10;
    rig.host->load = 2.25;
    rig.host->cpu = CPUTicks{0, 0, 0, 0};
    rig.host->processors = std::vector<CPUTicks>{{0, 0, 0, 0}};
    rig.smc->add("FNum", "ui8 ", {1});
    rig.smc->add("F0Ac", "fpe2", fpe2(1500));
    rig.registry->services["AppleSmartBattery"] = {
        {{"Voltage", std::int64_t{12000}}, {"InstantAmperage", std::int64_t{-1500}}}};
    const auto backend = rig.build();
    backend->prime(Timestamp{});
    rig.host->cpu = CPUTicks{30, 0, 70, 0};
    rig.host->processors = std::vector<CPUTicks>{{10, 0, 10, 0}};
    const LiveInputs in = backend->sample(Timestamp{});
    EXPECT_EQ(in.thermal, ThermalState::serious);
    EXPECT_EQ(in.cpuBusy, 30.0);
    EXPECT_EQ(in.coreLoads, (std::vector<double>{50.0}));
    EXPECT_EQ(in.load, 2.25);
    EXPECT_EQ(in.cores, 10);
    EXPECT_TRUE(in.lowPower);
    EXPECT_EQ(in.fans, (std::vector<FanReading>{{0, 1500.0, std::nullopt, std::nullopt}}));
    EXPECT_EQ(in.power, (PowerReading{18.0, "Battery discharge", "Battery (IORegistry)"}));
}

TEST(MacBackend, SummaryWithoutSmcOrHid) {
    MacRig rig;
    rig.withSMC = false;
    rig.hid->frameworkOpens = false;
    EXPECT_EQ(rig.build()->sensorSummary(),
              "SMC: not available on this Mac; IOHID temperature sensors: api not available");
}

TEST(MacBackend, SummaryListsKeysByClassFansAndHidCount) {
    MacRig rig;
    rig.smc->add("TC0P", "sp78", sp78(50));
    rig.smc->add("TG0D", "sp78", sp78(50));
    rig.smc->add("TC1C", "sp78", sp78(52));
    rig.smc->add("FNum", "ui8 ", {2});
    rig.smc->add("F0Ac", "fpe2", fpe2(1200));
    rig.smc->add("F1Ac", "fpe2", fpe2(1300));
    rig.hid->add("PMU tdie1", 40.0);
    EXPECT_EQ(rig.build()->sensorSummary(),
              "SMC temperature keys: cpu=[TC0P,TC1C] gpu=[TG0D] fans=2; "
              "IOHID temperature sensors: 1 reported");
}

TEST(MacBackend, CorruptKeyCountGivesEmptyBrackets) {
    MacRig rig;
    rig.smc->add("TC0P", "sp78", sp78(50));
    rig.smc->keyCount = 5000;
    EXPECT_EQ(rig.build()->sensorSummary(),
              "SMC temperature keys: cpu=[] gpu=[] fans=0; IOHID temperature sensors: 0 reported");
}

TEST(BatteryTemperature, HundredthsOfADegree) {
    auto state = std::make_shared<FakeRegistryState>();
    state->services["AppleSmartBattery"] = {{{"Temperature", std::int64_t{3012}}}};
    FakeRegistry registry(state);
    EXPECT_EQ(batteryTemperature(registry), (TempReading{30.12, "Battery (IORegistry)"}));
}

TEST(BatteryTemperature, OneDegreeIsNotPlausible) {
    auto state = std::make_shared<FakeRegistryState>();
    state->services["AppleSmartBattery"] = {{{"Temperature", std::int64_t{100}}}};
    FakeRegistry registry(state);
    EXPECT_FALSE(batteryTemperature(registry));
}

TEST(BatteryTemperature, NoBatteryOrNoNumber) {
    auto state = std::make_shared<FakeRegistryState>();
    FakeRegistry registry(state);
    EXPECT_FALSE(batteryTemperature(registry));
    state->services["AppleSmartBattery"] = {{{"Temperature", std::string("30")}}};
    EXPECT_FALSE(batteryTemperature(registry));
}

}  // namespace
}  // namespace velmora
