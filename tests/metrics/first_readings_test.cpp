#include <gtest/gtest.h>

#include <chrono>
#include <fstream>
#include <string>

#include "metrics/fixture_tree.hpp"
#include "metrics/linux/linux_backend.hpp"

namespace velmora {
namespace {

using namespace std::chrono_literals;

using testing::FixtureTree;

constexpr Timestamp kStart = Timestamp::fromSeconds(1'700'000'000);

TEST(FirstReadings, ASampleRightAfterPrimingHasNoCpuFiguresRatherThanNoise) {
    FixtureTree tree("intel_laptop");
    LinuxBackend backend(tree.root());
    backend.prime(kStart);
    tree.advance();
    const LiveInputs tooSoon = backend.sample(kStart + 50ms);
    EXPECT_FALSE(tooSoon.cpuBusy);
    EXPECT_FALSE(tooSoon.coreLoads);
    // The priming counters stay the baseline, so the next sample spans the whole interval.
    const LiveInputs later = backend.sample(kStart + 1s);
    ASSERT_TRUE(later.cpuBusy);
    EXPECT_DOUBLE_EQ(*later.cpuBusy, 200.0 / 800.0 * 100.0);
    ASSERT_TRUE(later.coreLoads);
    EXPECT_DOUBLE_EQ(later.coreLoads->at(0), 50.0);
}

TEST(FirstReadings, AtTheMinimumSpanTheFiguresAreTaken) {
    FixtureTree tree("intel_laptop");
    LinuxBackend backend(tree.root());
    backend.prime(kStart);
    tree.advance();
    EXPECT_TRUE(backend.sample(kStart + LinuxBackend::minimumCpuSpan).cpuBusy);
}

TEST(FirstReadings, ACoreWhoseFigureCannotBeHadMakesThePerCoreFiguresAbsentNotZero) {
    FixtureTree tree("intel_laptop");
    LinuxBackend backend(tree.root());
    backend.prime(kStart);
    tree.advance();
    // cpu1's counters went backwards (a counter reset): no figure for it, so none at all.
    std::ifstream next(testing::fixtureSource("intel_laptop") / "next/proc/stat");
    std::string stat;
    for (std::string line; std::getline(next, line);) {
        stat += (line.starts_with("cpu1 ") ? std::string("cpu1 1 1 1 1 1 1 1 0 0 0") : line) + "\n";
    }
    tree.write("proc/stat", stat);
    const LiveInputs in = backend.sample(kStart + 1s);
    EXPECT_TRUE(in.cpuBusy);
    EXPECT_FALSE(in.coreLoads);
}

}  // namespace
}  // namespace velmora
