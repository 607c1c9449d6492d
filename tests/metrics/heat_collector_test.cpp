#include "metrics/heat_collector.hpp"

#include <gtest/gtest.h>

#include <chrono>

#include "metrics/live_names.hpp"
#include "support/scripted_backend.hpp"

namespace velmora {
namespace {

using namespace std::chrono_literals;

using testing::ScriptedBackend;
using testing::ScriptedState;

constexpr Timestamp kStart = Timestamp::fromSeconds(1'700'000'000);

struct CollectorRig {
    std::shared_ptr<ScriptedState> state = std::make_shared<ScriptedState>();
    HeatCollector collector{std::make_unique<ScriptedBackend>(state), kStart};

    LiveInputs next(LiveInputs in, double at = 1) {
        state->samples.push_back(std::move(in));
        return collector.sample(kStart + Seconds(at));
    }
};

LiveInputs withCpu(std::optional<double> busy) {
    LiveInputs in;
    in.cpuBusy = busy;
    return in;
}

TEST(HeatCollector, PrimesTheBackendOnceAtConstruction) {
    CollectorRig rig;
    EXPECT_EQ(rig.state->primes, 1);
    EXPECT_EQ(rig.state->samplesTaken, 0);
    EXPECT_EQ(HeatCollector::interval, 1s);
}

TEST(HeatCollector, After61SamplesHistoryHoldsTheLast60) {
    CollectorRig rig;
    LiveInputs last;
    for (int i = 1; i <= 61; ++i)
        last = rig.next(withCpu(i));
    ASSERT_EQ(last.cpuHistory.size(), 60U);
    EXPECT_EQ(last.cpuHistory.front(), 2.0);
    EXPECT_EQ(last.cpuHistory.back(), 61.0);
}

TEST(HeatCollector, AbsentCpuLoadLeavesHistoryUnchanged) {
    CollectorRig rig;
    rig.next(withCpu(10));
    rig.next(withCpu(20));
    const LiveInputs in = rig.next(withCpu(std::nullopt));
    EXPECT_EQ(in.cpuHistory, (std::vector<double>{10, 20}));
    EXPECT_EQ(in.cpuBusy, std::nullopt);
}

TEST(HeatCollector, ForcedCriticalRaisesPeakAndClearingNeverLowersIt) {
    CollectorRig rig;
    rig.collector.forcedThermal = ThermalState::critical;
    const LiveInputs forced = rig.next(LiveInputs{});
    EXPECT_EQ(forced.thermal, ThermalState::critical);
    EXPECT_TRUE(forced.forced);
    EXPECT_EQ(forced.peakLevel, liveLevel(ThermalState::critical));
    EXPECT_EQ(forced.peakLevel, Level::blowout);
    rig.collector.forcedThermal.reset();
    const LiveInputs after = rig.next(LiveInputs{});
    EXPECT_EQ(after.thermal, ThermalState::nominal);
    EXPECT_FALSE(after.forced);
    EXPECT_EQ(after.peakLevel, Level::blowout);
}

TEST(HeatCollector, PeakFollowsThePlatformState) {
    CollectorRig rig;
    LiveInputs serious;
    serious.thermal = ThermalState::serious;
    EXPECT_EQ(rig.next(LiveInputs{}).peakLevel, Level::ok);
    EXPECT_EQ(rig.next(serious).peakLevel, Level::extreme);
    EXPECT_EQ(rig.next(LiveInputs{}).peakLevel, Level::extreme);
}

LiveInputs withCpuTemp(double celsius) {
    LiveInputs in;
    in.cpuTemp = TempReading{celsius, "test"};
    return in;
}

TEST(HeatCollector, FirstCpuTemperatureOfZeroOrBelowDoesNotSetThePeak) {
    CollectorRig rig;
    EXPECT_EQ(rig.next(withCpuTemp(0)).peakCpuTemp, std::nullopt);
    EXPECT_EQ(rig.next(withCpuTemp(-5)).peakCpuTemp, std::nullopt);
    EXPECT_EQ(rig.next(withCpuTemp(42)).peakCpuTemp, 42.0);
}

TEST(HeatCollector, PeakCpuTemperatureNeverFalls) {
    CollectorRig rig;
    rig.next(withCpuTemp(70));
    EXPECT_EQ(rig.next(withCpuTemp(65)).peakCpuTemp, 70.0);
    EXPECT_EQ(rig.next(LiveInputs{}).peakCpuTemp, 70.0);
    EXPECT_EQ(rig.next(withCpuTemp(71)).peakCpuTemp, 71.0);
}

TEST(HeatCollector, RamUsedAndPressureComeFromMemory) {
    CollectorRig rig;
    LiveInputs in;
    in.memory = MemoryInfo{42.0, 6.7, 16.0, "Warning"};
    const LiveInputs out = rig.next(in);
    EXPECT_EQ(out.ramUsed, 42.0);
    EXPECT_EQ(out.memPressure, "Warning");
    const LiveInputs none = rig.next(LiveInputs{});
    EXPECT_EQ(none.ramUsed, std::nullopt);
    EXPECT_EQ(none.memPressure, std::nullopt);
}

TEST(HeatCollector, LastAndLastAtFollowTheLatestSample) {
    CollectorRig rig;
    EXPECT_FALSE(rig.collector.last());
    EXPECT_FALSE(rig.collector.lastAt());
    const LiveInputs in = rig.next(withCpu(33), 5);
    EXPECT_EQ(rig.collector.last(), in);
    EXPECT_EQ(rig.collector.lastAt(), kStart + 5s);
}

TEST(HeatCollector, CurrentThermalIsFreshFor10Seconds) {
    CollectorRig rig;
    EXPECT_EQ(rig.collector.currentThermal(kStart), std::nullopt);
    LiveInputs fair;
    fair.thermal = ThermalState::fair;
    rig.next(fair, 0);
    EXPECT_EQ(rig.collector.currentThermal(kStart + 9900ms), ThermalState::fair);
    EXPECT_EQ(rig.collector.currentThermal(kStart + 10s), std::nullopt);
}

TEST(HeatCollector, SummaryComesFromTheBackend) {
    CollectorRig rig;
    EXPECT_EQ(rig.collector.sensorSummary(), "scripted sensors");
}

TEST(HeatCollector, SourceTableDescribesTheLastSample) {
    CollectorRig rig;
    EXPECT_EQ(rig.collector.sourceTable().at(1).value, "n/a");
    LiveInputs in = withCpu(12.4);
    in.load = 1.234;
    rig.next(in);
    const auto rows = rig.collector.sourceTable();
    ASSERT_EQ(rows.size(), 12U);
    EXPECT_EQ(rows[1], (SourceRow{"CPU busy", "12%", "REAL live", "cpu src"}));
    EXPECT_EQ(rows[3], (SourceRow{"Load average", "1.23", "REAL live", "load src"}));
    EXPECT_EQ(rows[6], (SourceRow{"CPU temperature", "n/a", "REAL absent", "ct src"}));
}

TEST(LiveNames, ThermalNames) {
    EXPECT_EQ(thermalName(ThermalState::nominal), "Nominal");
    EXPECT_EQ(thermalName(ThermalState::fair), "Fair");
    EXPECT_EQ(thermalName(ThermalState::serious), "Serious");
    EXPECT_EQ(thermalName(ThermalState::critical), "Critical");
    EXPECT_EQ(thermalName(static_cast<ThermalState>(9)), "Critical");
}

TEST(LiveNames, LiveLevelOfEachStateAndOfAnUnknownOne) {
    EXPECT_EQ(liveLevel(ThermalState::nominal), Level::ok);
    EXPECT_EQ(liveLevel(ThermalState::fair), Level::warm);
    EXPECT_EQ(liveLevel(ThermalState::serious), Level::extreme);
    EXPECT_EQ(liveLevel(ThermalState::critical), Level::blowout);
    EXPECT_EQ(liveLevel(static_cast<ThermalState>(9)), Level::blowout);
}

TEST(LiveNames, StageKeysCallBlowoutEmergency) {
    EXPECT_EQ(stageKey(Level::ok), "normal");
    EXPECT_EQ(stageKey(Level::warm), "warm");
    EXPECT_EQ(stageKey(Level::hot), "hot");
    EXPECT_EQ(stageKey(Level::extreme), "extreme");
    EXPECT_EQ(stageKey(Level::blowout), "emergency");
}

}  // namespace
}  // namespace velmora
