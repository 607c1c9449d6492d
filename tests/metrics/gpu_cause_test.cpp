#include <gtest/gtest.h>

#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <string>

#include "metrics/linux/linux_cause_reader.hpp"
#include "metrics/linux/nvml_library.hpp"
#include "proc_tree.hpp"

namespace velmora {
namespace {

using testing::FakeProcess;
using testing::ProcTree;

MonoTime at(double seconds) {
    return MonoTime::fromSeconds(100.0 + seconds);
}

/// GPU processes through the stand-in NVML library, named from a generated /proc tree.
class GpuCause : public ::testing::Test {
  protected:
    void SetUp() override {
        config_ = std::filesystem::path(proc_.root()) / "fake-nvml.conf";
        ::setenv("FAKE_NVML_CONFIG", config_.c_str(), 1);
        proc_.uptime(500.0);
        proc_.put(FakeProcess{77, "blender", 'R', 1, 0x400000, 0, 0, 0, 0, 100});
        proc_.put(FakeProcess{88, "Xorg", 'S', 1, 0x400000, 0, 0, 0, 0, 100});
    }
    void TearDown() override { ::unsetenv("FAKE_NVML_CONFIG"); }

    void describe(const std::string& text) const { std::ofstream(config_) << text; }

    HeatCause scanWith(const char* library) const {
        LinuxCauseReader reader(proc_.root(), [library] { return loadNvml(library); });
        return reader.scan(at(-5), at(0));
    }

    ProcTree proc_;
    std::filesystem::path config_;
};

TEST_F(GpuCause, GpuProcessesAreRankedByTheirShareOfTheGpuAndNamedFromProc) {
    describe("count 2\ngpu0.procs 77:60 88:- 99:5\ngpu1.procs 77:20 88:12\n");
    const auto cause = scanWith(FAKE_NVML_PATH);
    ASSERT_EQ(cause.gpu.size(), 3U);
    EXPECT_EQ(cause.gpu[0], (ProcessShare{"blender", 77, 60.0}));
    EXPECT_EQ(cause.gpu[1], (ProcessShare{"Xorg", 88, 12.0}));
    // Not a process the scan saw (another namespace, or gone): named by its pid.
    EXPECT_EQ(cause.gpu[2], (ProcessShare{"pid 99", 99, 5.0}));
}

TEST_F(GpuCause, NoLibraryOrAnOldOneMeansNoGpuRowsAndNoError) {
    describe("gpu0.procs 77:60\n");
    EXPECT_TRUE(scanWith("libnvidia-ml-not-here.so.1").gpu.empty());
    EXPECT_TRUE(scanWith(FAKE_NVML_BASIC_PATH).gpu.empty());
    describe("gpu0.procs 77:60\nfail nvmlDeviceGetProcessUtilization\n");
    EXPECT_TRUE(scanWith(FAKE_NVML_PATH).gpu.empty());
}

}  // namespace
}  // namespace velmora
