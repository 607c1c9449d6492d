#include <gtest/gtest.h>

#include <chrono>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <string>

#include "metrics/fixture_tree.hpp"
#include "metrics/linux/gpu_thermal.hpp"
#include "metrics/linux/linux_backend.hpp"
#include "metrics/linux/nvml_library.hpp"
#include "metrics/source_table.hpp"

namespace velmora {
namespace {

using namespace std::chrono_literals;

using testing::FixtureTree;

constexpr Timestamp kStart = Timestamp::fromSeconds(1'700'000'000);

/// The stand-in library's description of its GPUs, rewritten by each test.
class FakeNvml : public ::testing::Test {
  protected:
    void SetUp() override {
        config_ = std::filesystem::path(tree_.root()) / "fake-nvml.conf";
        ::setenv("FAKE_NVML_CONFIG", config_.c_str(), 1);
    }
    void TearDown() override { ::unsetenv("FAKE_NVML_CONFIG"); }

    void describe(const std::string& text) const { std::ofstream(config_) << text; }

    /// A machine with no hwmon, no thermal zones and no battery, as most cloud GPU servers.
    std::unique_ptr<LinuxBackend> server(const char* library = FAKE_NVML_PATH) {
        auto nvml = loadNvml(library);
        if (!nvml) return nullptr;
        auto backend = std::make_unique<LinuxBackend>(tree_.root(), std::move(nvml));
        backend->prime(kStart);
        return backend;
    }

    /// A GPU that slows down at 85 °C and shuts down at 95 °C, loaded with those thresholds.
    std::unique_ptr<LinuxBackend> gpuServer() {
        describe("gpu0.slowdown 85\ngpu0.shutdown 95\ngpu0.temp 60\n");
        return server();
    }

    LiveInputs sampleAt(LinuxBackend& backend, double temp, const std::string& rest = "") {
        describe("gpu0.slowdown 85\ngpu0.shutdown 95\ngpu0.temp " + std::to_string(temp) + "\n" +
                 rest);
        return backend.sample(kStart + std::chrono::seconds(++second_));
    }

    FixtureTree tree_{"virtual_machine"};
    std::filesystem::path config_;
    int second_ = 0;
};

const DeviceSource* gpuRow(const MetricSources& sources, std::size_t index) {
    return index < sources.devices.size() ? &sources.devices[index] : nullptr;
}

TEST_F(FakeNvml, ThresholdsArePresentedWithTheGpuInTheSourceTable) {
    describe(
        "gpu0.name Tesla T4\ngpu0.temp 61\ngpu0.slowdown 89\ngpu0.shutdown 92\n"
        "gpu0.gpu_max 87\ngpu0.memory_max 95\ngpu0.power_mw 70500\n");
    auto backend = server();
    ASSERT_TRUE(backend);
    const LiveInputs in = backend->sample(kStart + 1s);
    EXPECT_EQ(in.thermal, ThermalState::nominal);
    ASSERT_TRUE(in.gpuTemp);
    EXPECT_EQ(in.gpuTemp->celsius, 61.0);
    EXPECT_EQ(in.gpuTemp->source, "NVML Tesla T4");
    EXPECT_EQ(backend->thermal().sourceCount(), 1U);
    const MetricSources sources = backend->sources();
    const DeviceSource* row = gpuRow(sources, 0);
    ASSERT_NE(row, nullptr);
    EXPECT_EQ(row->label, "GPU 0");
    EXPECT_EQ(row->value, "61.0 °C");
    EXPECT_EQ(row->source,
              "NVML GPU 0 Tesla T4; slowdown 89 °C, shutdown 92 °C, GPU max 87 °C, memory max "
              "95 °C (critical from 89 °C); throttle: none; 70.5 W");
    const auto table = renderSourceTable(buildSourceTable(in, sources));
    EXPECT_NE(table.find("GPU 0"), std::string::npos);
}

TEST_F(FakeNvml, WithoutThresholdsTheGpuIsShownButJudgesNothing) {
    describe("gpu0.temp 97\n");
    auto backend = server();
    ASSERT_TRUE(backend);
    const LiveInputs in = backend->sample(kStart + 1s);
    EXPECT_EQ(in.gpuTemp->celsius, 97.0);
    EXPECT_EQ(in.thermal, ThermalState::nominal);
    EXPECT_EQ(backend->thermal().sourceCount(), 0U);
    EXPECT_NE(backend->sources().devices.at(0).source.find("no thresholds"), std::string::npos);
}

TEST_F(FakeNvml, GpuCrossingSlowdownThenShutdownMinusMarginRisesToCritical) {
    auto backend = gpuServer();
    ASSERT_TRUE(backend);
    EXPECT_EQ(sampleAt(*backend, 70).thermal, ThermalState::nominal);
    EXPECT_EQ(sampleAt(*backend, 75).thermal, ThermalState::fair);  // slowdown - 10
    EXPECT_EQ(sampleAt(*backend, 84).thermal, ThermalState::fair);
    EXPECT_EQ(sampleAt(*backend, 85).thermal, ThermalState::serious);  // at slowdown
    EXPECT_EQ(sampleAt(*backend, 91).thermal, ThermalState::serious);
    // Critical from shutdown - 3, confirmed by a second sample.
    EXPECT_EQ(sampleAt(*backend, 92).thermal, ThermalState::serious);
    EXPECT_EQ(sampleAt(*backend, 92).thermal, ThermalState::critical);
    EXPECT_EQ(backend->thermal().drivingSource(), "NVML GPU 0 Fake GPU");
    // Falling needs 3 °C below the threshold that raised it.
    EXPECT_EQ(sampleAt(*backend, 90).thermal, ThermalState::critical);
    EXPECT_EQ(sampleAt(*backend, 89).thermal, ThermalState::serious);
}

TEST_F(FakeNvml, CriticalNeverStartsBelowTheSlowdownThreshold) {
    const auto conditions = gpuConditions(GpuThresholds{90.0, 92.0, std::nullopt, std::nullopt});
    ASSERT_FALSE(conditions.empty());
    EXPECT_EQ(conditions.back().level, ThermalState::critical);
    EXPECT_EQ(conditions.back().threshold, 90.0);
    const auto shutdownOnly = gpuConditions(GpuThresholds{std::nullopt, 100.0, {}, {}});
    ASSERT_EQ(shutdownOnly.size(), 2U);
    EXPECT_EQ(shutdownOnly[0].level, ThermalState::serious);
    EXPECT_EQ(shutdownOnly[0].threshold, 90.0);
    EXPECT_EQ(shutdownOnly[1].threshold, 97.0);
}

TEST_F(FakeNvml, ThermalThrottleReasonsRaiseACoolGpuToSerious) {
    auto backend = gpuServer();
    ASSERT_TRUE(backend);
    EXPECT_EQ(sampleAt(*backend, 50).thermal, ThermalState::nominal);
    for (const char* mask : {"0x40", "0x20", "0x80", "0xE0"}) {
        EXPECT_EQ(sampleAt(*backend, 50, std::string("gpu0.throttle ") + mask + "\n").thermal,
                  ThermalState::serious)
            << mask;
        EXPECT_EQ(backend->thermal().drivingSource(), "NVML GPU 0 Fake GPU");
    }
    // Idle clocks and the software power cap are no sign of heat.
    EXPECT_EQ(sampleAt(*backend, 50, "gpu0.throttle 0x5\n").thermal, ThermalState::nominal);
    sampleAt(*backend, 50, "gpu0.throttle 0x60\n");
    EXPECT_NE(backend->sources().devices.at(0).source.find(
                  "throttle: HW thermal slowdown, SW thermal slowdown"),
              std::string::npos);
}

TEST_F(FakeNvml, SeveralGpusAreEachListedAndTheHottestDrivesTheLevel) {
    describe(
        "count 3\n"
        "gpu0.name A\ngpu0.temp 60\ngpu0.slowdown 85\ngpu0.shutdown 95\ngpu0.power_mw 100000\n"
        "gpu1.name B\ngpu1.temp 86\ngpu1.slowdown 85\ngpu1.shutdown 95\ngpu1.power_mw 250000\n"
        "gpu2.name C\ngpu2.temp 40\n");
    auto backend = server();
    ASSERT_TRUE(backend);
    const LiveInputs in = backend->sample(kStart + 1s);
    ASSERT_EQ(in.sensors.size(), 3U);
    EXPECT_EQ(in.sensors[0].name, "B");
    EXPECT_EQ(in.gpuTemp->source, "NVML B");
    EXPECT_EQ(in.thermal, ThermalState::serious);
    EXPECT_EQ(backend->thermal().drivingSource(), "NVML GPU 1 B");
    EXPECT_EQ(backend->thermal().sourceCount(), 2U);  // C states no thresholds
    ASSERT_EQ(backend->sources().devices.size(), 3U);
    EXPECT_EQ(backend->sources().devices[2].value, "40.0 °C");
    ASSERT_TRUE(in.power);
    EXPECT_DOUBLE_EQ(in.power->watts, 350.0);
    EXPECT_EQ(in.power->label, "2 GPUs' power");
    EXPECT_EQ(backend->sources().power, "NVML power usage");
}

TEST_F(FakeNvml, OneGpuDrawingPowerIsTheGpusFigure) {
    describe("gpu0.temp 50\ngpu0.power_mw 42000\n");
    auto backend = server();
    ASSERT_TRUE(backend);
    const LiveInputs in = backend->sample(kStart + 1s);
    ASSERT_TRUE(in.power);
    EXPECT_DOUBLE_EQ(in.power->watts, 42.0);
    EXPECT_EQ(in.power->label, "GPU power");
}

TEST_F(FakeNvml, MissingLibraryMeansNoVendorGpu) {
    EXPECT_EQ(loadNvml("/nonexistent/libnvidia-ml.so.1"), nullptr);
}

TEST_F(FakeNvml, LibraryWithoutThresholdThrottleOrPowerCallsStillGivesTemperatures) {
    describe(
        "gpu0.temp 93\ngpu0.slowdown 85\ngpu0.shutdown 95\ngpu0.throttle 0x40\n"
        "gpu0.power_mw 1000\n");
    auto backend = server(FAKE_NVML_BASIC_PATH);
    ASSERT_TRUE(backend);
    const LiveInputs in = backend->sample(kStart + 1s);
    EXPECT_EQ(in.gpuTemp->celsius, 93.0);
    EXPECT_EQ(in.thermal, ThermalState::nominal);
    EXPECT_FALSE(in.power);
    EXPECT_NE(backend->sources().devices.at(0).source.find("no thresholds; throttle: unknown"),
              std::string::npos);
}

TEST_F(FakeNvml, FailingInitialisationOrDeviceCountLoadsNothing) {
    describe("gpu0.temp 50\nfail nvmlInit_v2\n");
    EXPECT_EQ(loadNvml(FAKE_NVML_PATH), nullptr);
    describe("gpu0.temp 50\nfail nvmlDeviceGetCount_v2\n");
    EXPECT_EQ(loadNvml(FAKE_NVML_PATH), nullptr);
}

TEST_F(FakeNvml, FailingCallsLeaveTheirFiguresAbsentNeverZero) {
    auto backend = gpuServer();
    ASSERT_TRUE(backend);
    sampleAt(*backend, 92);
    ASSERT_EQ(sampleAt(*backend, 92).thermal, ThermalState::critical);
    const LiveInputs failed = sampleAt(*backend, 92,
                                       "fail nvmlDeviceGetTemperature\n"
                                       "fail nvmlDeviceGetCurrentClocksThrottleReasons\n"
                                       "fail nvmlDeviceGetPowerUsage\ngpu0.power_mw 5000\n");
    EXPECT_FALSE(failed.gpuTemp);
    EXPECT_TRUE(failed.sensors.empty());
    EXPECT_FALSE(failed.power);
    const MetricSources sources = backend->sources();
    const DeviceSource& row = sources.devices.at(0);
    EXPECT_FALSE(row.value);
    EXPECT_NE(row.source.find("throttle: unknown"), std::string::npos);
}

TEST_F(FakeNvml, FailingThresholdCallMeansNoThresholds) {
    describe("gpu0.temp 97\ngpu0.slowdown 85\nfail nvmlDeviceGetTemperatureThreshold\n");
    auto backend = server();
    ASSERT_TRUE(backend);
    EXPECT_EQ(backend->sample(kStart + 1s).thermal, ThermalState::nominal);
    EXPECT_EQ(backend->thermal().sourceCount(), 0U);
}

}  // namespace
}  // namespace velmora
