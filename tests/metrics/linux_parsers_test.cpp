#include <gtest/gtest.h>

#include "metrics/linux/meminfo.hpp"
#include "metrics/linux/proc_stat.hpp"
#include "metrics/linux/rapl.hpp"
#include "metrics/linux/sensor_class.hpp"
#include "metrics/linux/sysfs_file.hpp"
#include "metrics/linux/utf8_text.hpp"

namespace velmora {
namespace {

TEST(ProcStat, BusyExcludesStealAndGuestAndIdleIncludesIowait) {
    ProcStat stat;
    parseProcStat(
        "cpu  10 20 30 400 50 6 7 800 900 1000\n"
        "cpu0 1 2 3 40 5 6 7 8 9 10\n"
        "cpu1 9 18 27 360 45 0 0 792 891 990\n"
        "intr 1 2 3\n",
        stat);
    EXPECT_EQ(stat.total, (CpuTimes{10 + 20 + 30 + 6 + 7, 400 + 50}));
    EXPECT_EQ(stat.perCpu, (std::vector<CpuTimes>{{19, 45}, {54, 405}}));
}

TEST(ProcStat, OldFourFieldLinesAndGarbage) {
    ProcStat stat;
    parseProcStat("cpu  1 2 3 4\ncpu0 x\ncpu1 1 1 1 1\n", stat);
    EXPECT_EQ(stat.total, (CpuTimes{6, 4}));
    EXPECT_EQ(stat.perCpu.size(), 1U);
    parseProcStat("", stat);
    EXPECT_FALSE(stat.total);
    EXPECT_TRUE(stat.perCpu.empty());
}

TEST(ProcStat, BusyPercentBetweenReadings) {
    EXPECT_EQ(busyPercent({100, 100}, {125, 175}), 25.0);
    EXPECT_EQ(busyPercent({100, 100}, {100, 100}), std::nullopt);
    EXPECT_EQ(busyPercent({100, 100}, {90, 200}), std::nullopt);  // counters went back
}

TEST(Meminfo, UsedIsTotalMinusAvailable) {
    const auto info =
        parseMeminfo("MemTotal:       16777216 kB\nMemFree:  1 kB\nMemAvailable:    4194304 kB\n");
    ASSERT_TRUE(info);
    EXPECT_EQ(*info, (MemoryInfo{75.0, 12.0, 16.0, std::nullopt}));
}

TEST(Meminfo, OldKernelsEstimateAvailableMemory) {
    const auto info = parseMeminfo(
        "MemTotal: 2097152 kB\nMemFree: 524288 kB\nBuffers: 262144 kB\nCached: 262144 kB\n");
    ASSERT_TRUE(info);
    EXPECT_EQ(info->usedPercent, 50.0);
}

TEST(Meminfo, MissingTotalGivesNothing) {
    EXPECT_FALSE(parseMeminfo("MemAvailable: 1 kB\n"));
    EXPECT_FALSE(parseMeminfo("MemTotal: 0 kB\nMemAvailable: 0 kB\n"));
    EXPECT_FALSE(parseMeminfo(""));
}

TEST(MemoryPressure, FullAvg10OfFiveIsCritical) {
    EXPECT_EQ(memoryPressureFromPsi("some avg10=0.00 avg60=0 avg300=0 total=0\n"
                                    "full avg10=5.00 avg60=0 avg300=0 total=0\n"),
              "Critical");
}

TEST(MemoryPressure, SomeAvg10OfTenIsWarning) {
    EXPECT_EQ(memoryPressureFromPsi("some avg10=10.00 avg60=0 avg300=0 total=0\n"
                                    "full avg10=4.99 avg60=0 avg300=0 total=0\n"),
              "Warning");
}

TEST(MemoryPressure, BelowBothIsNormalAndNoReportIsNothing) {
    EXPECT_EQ(memoryPressureFromPsi("some avg10=9.99 avg60=0 avg300=0 total=0\n"
                                    "full avg10=0.00 avg60=0 avg300=0 total=0\n"),
              "Normal");
    EXPECT_EQ(memoryPressureFromPsi(""), std::nullopt);
    EXPECT_EQ(memoryPressureFromPsi("garbage"), std::nullopt);
}

TEST(LoadAverage, FirstField) {
    EXPECT_EQ(parseLoadAverage("0.52 0.58 0.59 2/1234 56789\n"), 0.52);
    EXPECT_EQ(parseLoadAverage("x"), std::nullopt);
}

TEST(LoadAverage, InfinityAndNanAreNotLoads) {
    for (const char* text : {"inf 0.1 0.1 1/1 1\n", "infinity\n", "nan 0 0 1/1 1\n", "-1 0 0"}) {
        EXPECT_EQ(parseLoadAverage(text), std::nullopt) << text;
    }
}

TEST(CpuList, RangesAndSingles) {
    EXPECT_EQ(countCpuList("0-7\n"), 8);
    EXPECT_EQ(countCpuList("0\n"), 1);
    EXPECT_EQ(countCpuList("0-3,5,7-8\n"), 7);
    EXPECT_EQ(countCpuList(""), std::nullopt);
    EXPECT_EQ(countCpuList("3-1"), std::nullopt);
}

TEST(CpuList, ListsNamingMoreCpusThanAnIntCountsAreRefused) {
    EXPECT_EQ(countCpuList("0-2147483646"), 2147483647);
    EXPECT_EQ(countCpuList("0-2147483647"), std::nullopt);
    EXPECT_EQ(countCpuList("0-2147483646,5"), std::nullopt);
    EXPECT_EQ(countCpuList("00000000932-83560247115120641,5"), std::nullopt);
    EXPECT_EQ(countCpuList("0-9223372036854775807"), std::nullopt);
}

TEST(ParseInteger, KernelAttributeText) {
    EXPECT_EQ(parseInteger("42000\n"), 42000);
    EXPECT_EQ(parseInteger("-273150\n"), -273150);
    EXPECT_EQ(parseInteger("12 kB"), std::nullopt);
    EXPECT_EQ(parseInteger("\n"), std::nullopt);
}

TEST(Utf8, ValidTextIsKeptAndBrokenBytesReplaced) {
    EXPECT_EQ(validUtf8("Package id 0"), "Package id 0");
    EXPECT_EQ(validUtf8("50°C"), "50°C");
    EXPECT_EQ(validUtf8("a\xFF"
                        "b"),
              "a\xEF\xBF\xBD"
              "b");
    EXPECT_EQ(validUtf8("\xC3"), "\xEF\xBF\xBD");
    EXPECT_EQ(validUtf8("\xED\xA0\x80"), "\xEF\xBF\xBD\xEF\xBF\xBD\xEF\xBF\xBD");  // surrogate
}

TEST(SensorClass, ChipsByDriverName) {
    for (const char* chip : {"coretemp", "k10temp", "zenpower", "cpu_thermal", "cpu0_thermal"}) {
        EXPECT_EQ(classifyHwmonChip(chip), SensorClass::cpu) << chip;
    }
    for (const char* chip : {"amdgpu", "radeon", "nouveau"}) {
        EXPECT_EQ(classifyHwmonChip(chip), SensorClass::gpu) << chip;
    }
    EXPECT_EQ(classifyHwmonChip("nvme"), SensorClass::ssd);
    EXPECT_EQ(classifyHwmonChip("drivetemp"), SensorClass::ssd);
    EXPECT_EQ(classifyHwmonChip("BAT0"), SensorClass::battery);
    EXPECT_EQ(classifyHwmonChip("acpitz"), SensorClass::other);
    EXPECT_EQ(classifyHwmonChip("nct6798"), SensorClass::other);
}

TEST(Rapl, WattsFromMicrojoulesWithOneWrap) {
    EXPECT_EQ(wattsBetween(1'000'000, 13'500'000, std::nullopt, Seconds(1.0)), 12.5);
    EXPECT_EQ(wattsBetween(1'000'000, 11'000'000, std::nullopt, Seconds(2.0)), 5.0);
    EXPECT_EQ(wattsBetween(999'000'000, 9'000'000, 999'999'999, Seconds(1.0)), 10.0);
    EXPECT_EQ(wattsBetween(5, 1, std::nullopt, Seconds(1.0)), std::nullopt);
    EXPECT_EQ(wattsBetween(1, 5, std::nullopt, Seconds(0.0)), std::nullopt);
}

TEST(Rapl, NegativeCountersGiveNothingAndAWrapAtTheLargestRangeStaysExact) {
    EXPECT_EQ(wattsBetween(5, -100, 10, Seconds(1.0)), std::nullopt);
    EXPECT_EQ(wattsBetween(-1, 9'223'372'036'854'775'807, std::nullopt, Seconds(1.0)),
              std::nullopt);
    constexpr long long kLargest = 9'223'372'036'854'775'807;
    EXPECT_EQ(wattsBetween(kLargest - 1'000'000, 1'000'000, kLargest, Seconds(1.0)), 2.000001);
}

}  // namespace
}  // namespace velmora
