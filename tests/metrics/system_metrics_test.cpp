#include "metrics/macos/system_metrics.hpp"

#include <gtest/gtest.h>

#include "metrics/fakes/fake_host.hpp"
#include "metrics/fakes/fake_registry.hpp"
#include "metrics/fakes/fake_smc.hpp"

namespace velmora {
namespace {

using namespace velmora::testing;

TEST(CpuBusyPercent, FirstCallPrimesAndSecondMeasures) {
    auto state = std::make_shared<FakeHostState>();
    FakeHost host(state);
    SystemMetrics metrics(host);
    state->cpu = CPUTicks{100, 50, 800, 50};
    EXPECT_FALSE(metrics.cpuBusyPercent());
    state->cpu = CPUTicks{130, 60, 850, 60};  // busy 50 of 100
    EXPECT_EQ(metrics.cpuBusyPercent(), 50.0);
}

TEST(CpuBusyPercent, IdenticalCountersGiveNothingNotZero) {
    auto state = std::make_shared<FakeHostState>();
    FakeHost host(state);
    SystemMetrics metrics(host);
    state->cpu = CPUTicks{100, 50, 800, 50};
    (void)metrics.cpuBusyPercent();
    EXPECT_EQ(metrics.cpuBusyPercent(), std::nullopt);
}

TEST(CpuBusyPercent, CountersWrapAt32Bits) {
    auto state = std::make_shared<FakeHostState>();
    FakeHost host(state);
    SystemMetrics metrics(host);
    state->cpu = CPUTicks{0xFFFFFFF0U, 0, 0xFFFFFFF0U, 0};
    (void)metrics.cpuBusyPercent();
    state->cpu = CPUTicks{0x00000010U, 0, 0x00000010U, 0};  // +32 user, +32 idle
    EXPECT_EQ(metrics.cpuBusyPercent(), 50.0);
}

TEST(CpuBusyPercent, FailedReadKeepsThePreviousCounters) {
    auto state = std::make_shared<FakeHostState>();
    FakeHost host(state);
    SystemMetrics metrics(host);
    state->cpu = CPUTicks{0, 0, 0, 0};
    (void)metrics.cpuBusyPercent();
    state->cpu.reset();
    EXPECT_FALSE(metrics.cpuBusyPercent());
    state->cpu = CPUTicks{25, 0, 75, 0};
    EXPECT_EQ(metrics.cpuBusyPercent(), 25.0);
}

TEST(PerCoreCPU, AfterTheProcessorCountChangesOneSampleIsAbsentThenItWorks) {
    auto state = std::make_shared<FakeHostState>();
    FakeHost host(state);
    PerCoreCPU perCore(host);
    state->processors = std::vector<CPUTicks>{{0, 0, 0, 0}, {0, 0, 0, 0}};
    EXPECT_FALSE(perCore.sample());
    state->processors = std::vector<CPUTicks>{{10, 0, 10, 0}, {0, 0, 20, 0}};
    EXPECT_EQ(perCore.sample(), (std::vector<double>{50.0, 0.0}));
    state->processors = std::vector<CPUTicks>{{20, 0, 20, 0}, {0, 0, 40, 0}, {0, 0, 0, 0}};
    EXPECT_FALSE(perCore.sample());
    state->processors = std::vector<CPUTicks>{{30, 0, 20, 0}, {0, 0, 40, 0}, {5, 5, 10, 0}};
    EXPECT_EQ(perCore.sample(), (std::vector<double>{100.0, 0.0, 50.0}));
}

TEST(PerCoreCPU, AProcessorWithoutTicksCountsZero) {
    auto state = std::make_shared<FakeHostState>();
    FakeHost host(state);
    PerCoreCPU perCore(host);
    state->processors = std::vector<CPUTicks>{{1, 1, 1, 1}};
    (void)perCore.sample();
    EXPECT_EQ(perCore.sample(), (std::vector<double>{0.0}));
}

TEST(GpuUtilization, TakesTheFirstKeyPresentAndTheBusiestAccelerator) {
    auto state = std::make_shared<FakeRegistryState>();
    state->services["IOAccelerator"] = {
        {{"PerformanceStatistics", RegistryDictionary{{"GPU Activity(%)", std::int64_t{30}},
                                                      {"Device Utilization %", std::int64_t{12}}}}},
        {{"PerformanceStatistics", RegistryDictionary{{"GPU Activity(%)", 41.5}}}},
    };
    FakeRegistry registry(state);
    EXPECT_EQ(gpuUtilizationPercent(registry), 41.5);
}

TEST(GpuUtilization, CoreUtilizationIsDividedByTenMillion) {
    auto state = std::make_shared<FakeRegistryState>();
    state->services["IOAccelerator"] = {
        {{"PerformanceStatistics",
          RegistryDictionary{{"GPU Core Utilization", std::int64_t{250'000'000}}}}}};
    FakeRegistry registry(state);
    EXPECT_EQ(gpuUtilizationPercent(registry), 25.0);
}

TEST(GpuUtilization, OutOfRangeNonNumericOrMissingGiveNothing) {
    auto state = std::make_shared<FakeRegistryState>();
    state->services["IOAccelerator"] = {
        {{"PerformanceStatistics", RegistryDictionary{{"Device Utilization %", 101.0}}}},
        {{"PerformanceStatistics", RegistryDictionary{{"GPU Activity(%)", std::string("9")}}}},
        {{"Other", std::int64_t{3}}},
    };
    FakeRegistry registry(state);
    EXPECT_FALSE(gpuUtilizationPercent(registry));
    state->iteratorFails = true;
    EXPECT_FALSE(gpuUtilizationPercent(registry));
}

TEST(MemoryInfo, UsedPagesOverPhysicalMemoryWithPressure) {
    auto state = std::make_shared<FakeHostState>();
    state->pages = VMPageCounts{262144, 131072, 131072};  // 524288 pages of 16 KiB = 8 GiB
    state->physical = 16ULL << 30U;
    state->pressure = 2;
    FakeHost host(state);
    const auto info = memoryInfo(host);
    ASSERT_TRUE(info);
    EXPECT_EQ(*info, (MemoryInfo{50.0, 8.0, 16.0, "Warning"}));
    SystemMetrics metrics(host);
    EXPECT_EQ(metrics.ramUsedPercent(), 50.0);
}

TEST(MemoryInfo, CappedAt100AndAbsentWithoutPhysicalMemory) {
    auto state = std::make_shared<FakeHostState>();
    state->pages = VMPageCounts{1 << 20, 0, 0};
    state->physical = 1ULL << 30U;
    FakeHost host(state);
    EXPECT_EQ(memoryInfo(host)->usedPercent, 100.0);
    EXPECT_EQ(memoryInfo(host)->pressure, std::nullopt);
    state->physical = 0;
    EXPECT_FALSE(memoryInfo(host));
    state->physical = 1ULL << 30U;
    state->pages.reset();
    EXPECT_FALSE(memoryInfo(host));
}

TEST(MemoryPressureName, LevelsOneTwoFourAreNamedAndThreeIsNot) {
    EXPECT_EQ(memoryPressureName(1), "Normal");
    EXPECT_EQ(memoryPressureName(2), "Warning");
    EXPECT_EQ(memoryPressureName(4), "Critical");
    EXPECT_EQ(memoryPressureName(3), std::nullopt);
    EXPECT_EQ(memoryPressureName(0), std::nullopt);
}

std::unique_ptr<SMC> fanSMC(const std::shared_ptr<FakeSMCState>& state) {
    return SMC::open(std::make_unique<FakeSMCTransport>(state));
}

TEST(ReadFans, NoSmcOrFanCountOutsideOneToEightGivesNoFans) {
    EXPECT_TRUE(readFans(nullptr).empty());
    for (const std::uint8_t count : {0, 9}) {
        auto state = std::make_shared<FakeSMCState>();
        state->add("FNum", "ui8 ", {count});
        state->add("F0Ac", "fpe2", fpe2(1200));
        EXPECT_TRUE(readFans(fanSMC(state).get()).empty()) << int{count};
    }
}

TEST(ReadFans, AFanCountThatIsNotANumberGivesNoFans) {
    auto state = std::make_shared<FakeSMCState>();
    state->add("FNum", "flt ", {0x00, 0x00, 0xC0, 0x7F});  // a quiet NaN
    state->add("F0Ac", "fpe2", fpe2(1200));
    EXPECT_TRUE(readFans(fanSMC(state).get()).empty());
}

TEST(ReadFans, AFanAt20000IsLeftOutAndAMaxOf20000IsDropped) {
    auto state = std::make_shared<FakeSMCState>();
    state->add("FNum", "ui8 ", {2});
    state->add("F0Ac", "flt ", flt(20000));  // beyond what fpe2 can hold
    state->add("F0Mx", "fpe2", fpe2(6000));
    state->add("F1Ac", "fpe2", fpe2(2400));
    state->add("F1Mn", "fpe2", fpe2(1200));
    state->add("F1Mx", "flt ", flt(20000));
    const std::vector<FanReading> expected{{1, 2400.0, 1200.0, std::nullopt}};
    EXPECT_EQ(readFans(fanSMC(state).get()), expected);
}

TEST(ReadFans, FltFanValuesDecodeThroughTheTemperatureRules) {
    auto state = std::make_shared<FakeSMCState>();
    state->add("FNum", "ui8 ", {1});
    state->add("F0Ac", "flt ", {0x00, 0x00, 0x96, 0x44});  // 1200.0f
    EXPECT_EQ(readFans(fanSMC(state).get()).at(0).rpm, 1200.0);
}

std::shared_ptr<FakeRegistryState> battery(FakeProperties props) {
    auto state = std::make_shared<FakeRegistryState>();
    state->services["AppleSmartBattery"] = {std::move(props)};
    return state;
}

TEST(BatteryInfo, UnsignedNegativeAmperageIsCorrected) {
    FakeRegistry registry(battery({{"InstantAmperage", std::uint64_t{18446744073709550616ULL}}}));
    EXPECT_EQ(batteryInfo(registry)->amperageMA, -1000.0);
}

TEST(BatteryInfo, AmperageFallsBackAndHugeMagnitudesAreDropped) {
    FakeRegistry fallback(battery({{"Amperage", std::int64_t{-2500}}}));
    EXPECT_EQ(batteryInfo(fallback)->amperageMA, -2500.0);
    FakeRegistry huge(battery({{"InstantAmperage", std::int64_t{100001}}}));
    EXPECT_EQ(batteryInfo(huge)->amperageMA, std::nullopt);
}

TEST(BatteryInfo, MaxCapacityZeroHasNoPercentAndOverfullIsCapped) {
    FakeRegistry empty(
        battery({{"CurrentCapacity", std::int64_t{50}}, {"MaxCapacity", std::int64_t{0}}}));
    EXPECT_EQ(batteryInfo(empty)->percent, std::nullopt);
    FakeRegistry full(
        battery({{"CurrentCapacity", std::int64_t{101}}, {"MaxCapacity", std::int64_t{100}}}));
    EXPECT_EQ(batteryInfo(full)->percent, 100);
}

TEST(BatteryInfo, ReadsEveryFieldAndLeavesNonNumbersAbsent) {
    FakeRegistry registry(battery({{"CurrentCapacity", std::int64_t{4321}},
                                   {"MaxCapacity", std::int64_t{5000}},
                                   {"IsCharging", true},
                                   {"ExternalConnected", true},
                                   {"InstantAmperage", std::int64_t{1500}},
                                   {"Voltage", std::string("12000")}}));
    const BatteryInfo expected{86, true, true, 1500.0, std::nullopt};
    EXPECT_EQ(batteryInfo(registry), expected);
}

TEST(BatteryInfo, NoBatteryService) {
    FakeRegistry registry(std::make_shared<FakeRegistryState>());
    EXPECT_FALSE(batteryInfo(registry));
}

TEST(PowerReading, SmcSystemPowerComesFirst) {
    auto state = std::make_shared<FakeSMCState>();
    state->add("PSTR", "flt ", {0x00, 0x00, 0x48, 0x41});  // 12.5f
    const auto smc = fanSMC(state);
    const BatteryInfo discharging{.amperageMA = -1500.0, .voltageMV = 12000.0};
    EXPECT_EQ(powerReading(smc.get(), discharging),
              (PowerReading{12.5, "System power", "SMC PSTR"}));
}

TEST(PowerReading, BatteryAtMinus1500mAAnd12VGives18WattsDischarge) {
    const BatteryInfo discharging{.amperageMA = -1500.0, .voltageMV = 12000.0};
    EXPECT_EQ(powerReading(nullptr, discharging),
              (PowerReading{18.0, "Battery discharge", "Battery (IORegistry)"}));
}

TEST(PowerReading, HalfAMilliampAt10VGivesNothing) {
    EXPECT_FALSE(powerReading(nullptr, BatteryInfo{.amperageMA = 0.5, .voltageMV = 10000.0}));
    EXPECT_FALSE(powerReading(nullptr, std::nullopt));
}

TEST(PowerReading, ImplausibleSmcPowerFallsBackToTheBattery) {
    auto state = std::make_shared<FakeSMCState>();
    state->add("PSTR", "flt ", {0x00, 0x00, 0x00, 0x3F});  // 0.5f: not above 0.5
    const auto smc = fanSMC(state);
    EXPECT_EQ(powerReading(smc.get(), BatteryInfo{.amperageMA = 2000, .voltageMV = 12000})->label,
              "Battery charge");
}

}  // namespace
}  // namespace velmora
