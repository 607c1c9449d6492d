#include <gtest/gtest.h>
#include <nlohmann/json.hpp>

#include <fcntl.h>
#include <unistd.h>

#include <cerrno>
#include <cstring>
#include <memory>
#include <string>
#include <vector>

#include "metrics/heat_collector.hpp"
#include "metrics/linux/linux_backend.hpp"
#include "metrics/linux/linux_cause_reader.hpp"
#include "metrics/linux/pid_stat.hpp"
#include "metrics/linux/process_scanner.hpp"
#include "metrics/linux/service_counters.hpp"
#include "metrics/live_model.hpp"
#include "proc_tree.hpp"
#include "store/log_escape.hpp"

namespace velmora {
namespace {

using testing::FakeProcess;
using testing::ProcTree;
using testing::statLine;

const std::uint64_t hz = static_cast<std::uint64_t>(::sysconf(_SC_CLK_TCK));

MonoTime at(double seconds) {
    return MonoTime::fromSeconds(5000.0 + seconds);
}

// ---- the stat parser

TEST(PidStatParser, TheNameRunsToTheLastParenthesis) {
    const auto stat =
        parsePidStat(statLine(FakeProcess{42, "a) b (c", 'R', 7, 0x400000, 11, 22, 33, 44, 555}));
    ASSERT_TRUE(stat);
    EXPECT_EQ(stat->pid, 42);
    EXPECT_EQ(stat->name, "a) b (c");
    EXPECT_EQ(stat->state, 'R');
    EXPECT_EQ(stat->ppid, 7);
    EXPECT_EQ(stat->utime, 11U);
    EXPECT_EQ(stat->stime, 22U);
    EXPECT_EQ(stat->cutime, 33U);
    EXPECT_EQ(stat->cstime, 44U);
    EXPECT_EQ(stat->starttime, 555U);
    EXPECT_EQ(stat->totalTicks(), 110U);
}

TEST(PidStatParser, LineFeedsSpacesAndInvalidBytesStayInTheName) {
    const std::string name = "x\n1 (y) Z 2 \xff\xfe";
    const auto stat = parsePidStat(statLine(FakeProcess{9, name, 'S', 1, 0, 1, 2, 0, 0, 3}));
    ASSERT_TRUE(stat);
    EXPECT_EQ(stat->name, name);
    EXPECT_EQ(stat->state, 'S');
    EXPECT_EQ(stat->starttime, 3U);
}

TEST(PidStatParser, KernelThreadsAndZombiesAreRecognised) {
    EXPECT_TRUE(
        parsePidStat(statLine(FakeProcess{5, "kworker/0:1", 'I', 2, 0x208040}))->kernelThread());
    EXPECT_TRUE(parsePidStat(statLine(FakeProcess{2, "kthreadd", 'S', 0, 0}))->kernelThread());
    EXPECT_TRUE(parsePidStat(statLine(FakeProcess{6, "defunct", 'Z', 1}))->ended());
    EXPECT_FALSE(parsePidStat(statLine(FakeProcess{6, "bash", 'S', 1}))->ended());
}

TEST(PidStatParser, CutOrForeignTextIsRefused) {
    EXPECT_FALSE(parsePidStat(""));
    EXPECT_FALSE(parsePidStat("12 (name"));
    EXPECT_FALSE(parsePidStat("12 (name) R 1 1 1 0 -1 0 0 0 0 0 5 6"));
    EXPECT_FALSE(parsePidStat("x (name) R 1 1 1 0 -1 0 0 0 0 0 5 6 7 8 20 0 1 0 9"));
    EXPECT_FALSE(parsePidStat("-3 (name) R 1 1 1 0 -1 0 0 0 0 0 5 6 7 8 20 0 1 0 9"));
    // Children's time is signed in the kernel's format, never negative in a real count.
    EXPECT_FALSE(parsePidStat("12 (name) R 1 1 1 0 -1 0 0 0 0 0 5 6 -7 8 20 0 1 0 9"));
    EXPECT_FALSE(parsePidStat("12 (name) R 1 1 1 0 -1 0 0 0 0 0 5 x 7 8 20 0 1 0 9"));
    EXPECT_FALSE(parsePidStat("12 (name)R 1 1 1 0 -1 0 0 0 0 0 5 6 7 8 20 0 1 0 9"));
    EXPECT_TRUE(parsePidStat("12 (name) R 1 1 1 0 -1 0 0 0 0 0 5 6 7 8 20 0 1 0 9"));
}

TEST(CgroupUsage, UsageUsecIsReadFromCpuStat) {
    EXPECT_EQ(parseCgroupUsage("usage_usec 123456\nuser_usec 100000\nsystem_usec 23456\n"),
              123456U);
    EXPECT_EQ(parseCgroupUsage("user_usec 1\nusage_usec 7\n"), 7U);
    EXPECT_EQ(parseCgroupUsage("user_usec 1\n"), std::nullopt);
    EXPECT_EQ(parseCgroupUsage("usage_usec \n"), std::nullopt);
    EXPECT_EQ(parseCgroupUsage("usage_usec 12x\n"), std::nullopt);
}

// ---- the process scanner on generated trees

struct ScannerFixture : ::testing::Test {
    ProcTree proc;
    // Ten thousand seconds after boot; processes started at 1000 s unless a test says otherwise.
    static constexpr double uptime = 10000.0;
    static std::uint64_t startedAt(double seconds) {
        return static_cast<std::uint64_t>(seconds * static_cast<double>(hz));
    }
    FakeProcess process(int pid, const std::string& name, std::uint64_t utime) const {
        return FakeProcess{pid, name, 'R', 1, 0x400000, utime, 0, 0, 0, startedAt(1000.0)};
    }
    ScannerFixture() { proc.uptime(uptime); }
};

TEST_F(ScannerFixture, ProcessesAreRankedByTheTimeTheyUsedBetweenScans) {
    ProcessScanner scanner(proc.root());
    proc.put(process(100, "light", 1000));
    proc.put(process(200, "cc1plus", 1000));
    proc.put(process(300, "yes", 1000));
    proc.put(process(400, "idle", 1000));
    scanner.scan(at(-5), at(0));
    // One second later: 10, 50 and 99 ticks of a hundred a second used.
    proc.put(process(100, "light", 1000 + hz / 10));
    proc.put(process(200, "cc1plus", 1000 + hz / 2));
    proc.put(process(300, "yes", 1000 + hz * 99 / 100));
    const auto rows = scanner.scan(at(0), at(1));
    ASSERT_EQ(rows.size(), 3U);  // the idle one is not a row
    EXPECT_EQ(rows[0], (ProcessShare{"yes", 300, 99.0}));
    EXPECT_EQ(rows[1], (ProcessShare{"cc1plus", 200, 50.0}));
    EXPECT_EQ(rows[2], (ProcessShare{"light", 100, 10.0}));
}

TEST_F(ScannerFixture, ChildrenThatEndedCountForTheirParentButNotTwice) {
    ProcessScanner scanner(proc.root());
    FakeProcess make = process(50, "make", 10);
    make.cutime = 5000;
    proc.put(make);
    FakeProcess child = process(51, "cc1plus", 100);
    child.ppid = 50;
    proc.put(child);
    scanner.scan(at(-5), at(0));
    // The compiler used 80 more ticks and ended; make waited for it, and for a second compiler
    // that started and ended between the scans after using 50 ticks. make's children's time
    // grows by the first one's whole life, of which 100 ticks were counted in its own row.
    proc.remove(51);
    make.cutime += 140 + 50;
    make.cstime += 40;
    proc.put(make);
    const auto rows = scanner.scan(at(0), at(1));
    ASSERT_EQ(rows.size(), 1U);
    EXPECT_EQ(rows[0].pid, 50);
    EXPECT_DOUBLE_EQ(rows[0].percent, 100.0 * (80 + 50) / static_cast<double>(hz));
    // Nothing more ended: nothing more is counted.
    const auto later = scanner.scan(at(1), at(2));
    EXPECT_TRUE(later.empty());
}

TEST_F(ScannerFixture, AReusedPidNeverInheritsTheOldProcessesTime) {
    ProcessScanner scanner(proc.root());
    proc.put(process(700, "old", 50));
    scanner.scan(at(-5), at(0));
    // The old one ended; a new process got its pid 3 s ago and has used 3 s of CPU since.
    FakeProcess reborn{700, "new", 'R', 1, 0x400000, 3 * hz, 0, 0, 0, startedAt(uptime - 3)};
    proc.put(reborn);
    const auto rows = scanner.scan(at(-5), at(1));
    ASSERT_EQ(rows.size(), 1U);
    EXPECT_EQ(rows[0].name, "new");
    // Its own 3 s over the 6 s window, not 250 ticks "used" since the old one's reading.
    EXPECT_DOUBLE_EQ(rows[0].percent, 50.0);
}

TEST_F(ScannerFixture, AtFirstSightAProcessesOwnAverageStandsInForTheWindow) {
    ProcessScanner scanner(proc.root());
    // Two seconds old and busy all that time; old and mostly idle; old with a huge count of
    // ended children, which may be from any time in its life.
    proc.put(FakeProcess{10, "young", 'R', 1, 0x400000, 2 * hz, 0, 0, 0, startedAt(uptime - 2)});
    proc.put(FakeProcess{11, "old", 'S', 1, 0x400000, 900 * hz, 0, 0, 0, startedAt(1000)});
    proc.put(FakeProcess{12, "shell", 'S', 1, 0x400000, 0, 0, 90000 * hz, 0, startedAt(1000)});
    const auto rows = scanner.scan(at(-5), at(0));
    ASSERT_EQ(rows.size(), 2U);
    EXPECT_EQ(rows[0], (ProcessShare{"young", 10, 40.0}));
    EXPECT_EQ(rows[1].name, "old");
    EXPECT_DOUBLE_EQ(rows[1].percent, 10.0);  // 900 s over its 9000 s life
}

TEST_F(ScannerFixture, KernelThreadsZombiesUnreadableAndForeignEntriesAreSkipped) {
    std::vector<std::string> opened;
    ProcessScanner scanner(proc.root(), [&opened](int dir, const char* path) {
        opened.emplace_back(path);
        if (std::string(path) == "31/stat") {
            errno = EACCES;  // another user's process behind hidepid or EACCES
            return -1;
        }
        return ::openat(dir, path, O_RDONLY | O_CLOEXEC);
    });
    proc.put(process(30, "ok", 100 * hz));
    proc.put(process(31, "secret", 100 * hz));
    proc.put(FakeProcess{32, "kworker/1:0", 'I', 2, 0x208040, 100 * hz, 0, 0, 0, 1});
    proc.put(FakeProcess{33, "gone", 'Z', 1, 0x400000, 100 * hz, 0, 0, 0, 1});
    proc.putText(34, "garbage");
    proc.putText(35, "");
    proc.tree().write("proc/sys/kernel/x", "1");
    proc.tree().write("proc/12ab/stat", statLine(process(12, "not a pid dir", 100 * hz)));
    const auto rows = scanner.scan(at(-5), at(0));
    ASSERT_EQ(rows.size(), 1U);
    EXPECT_EQ(rows[0].name, "ok");
    EXPECT_EQ(scanner.lastCount(), 1U);
    EXPECT_EQ(opened.size(), 6U);  // 30 to 35, nothing else
}

TEST_F(ScannerFixture, AProcDirectoryThatCannotBeReadGivesNoRows) {
    ProcessScanner scanner(proc.root() + "/nowhere");
    EXPECT_TRUE(scanner.scan(at(-5), at(0)).empty());
}

TEST_F(ScannerFixture, HostileNamesReachTheLogEscapedAndThePagesAsText) {
    ProcessScanner scanner(proc.root());
    const std::string forged = "x\n2026-01-01 00:00:00.000 stage-c: state idle -> fired \xff";
    proc.put(process(66, forged, 0));
    scanner.scan(at(-5), at(0));
    proc.put(process(66, forged, hz));
    HeatCause cause;
    cause.processes = scanner.scan(at(0), at(1));
    ASSERT_EQ(cause.processes.size(), 1U);
    EXPECT_EQ(cause.processes[0].name, forged);
    const std::string logged = escapeForLog(heatRiseLine(LevelRise{Level::ok, Level::hot}, cause));
    EXPECT_EQ(logged.find('\n'), std::string::npos);
    EXPECT_NE(logged.find("(pid 66) 100% of a core"), std::string::npos);
    LiveInputs inputs;
    inputs.thermal = ThermalState::serious;
    inputs.heatCause = cause;
    const auto page = nlohmann::json::parse(LiveModel::json(inputs));
    EXPECT_EQ(page.at("heatCause").at("processes").at(0).at("pid"), 66);
}

TEST_F(ScannerFixture, FiveThousandProcessesAreAllReadAndTheBusiestFound) {
    ProcessScanner scanner(proc.root());
    for (int pid = 1000; pid < 6000; ++pid)
        proc.put(process(pid, "worker " + std::to_string(pid), 100));
    scanner.scan(at(-5), at(0));
    proc.put(process(4321, "worker 4321", 100 + hz * 3 / 4));
    proc.put(process(1234, "worker 1234", 100 + hz / 4));
    const auto rows = scanner.scan(at(0), at(1));
    EXPECT_EQ(scanner.lastCount(), 5000U);
    ASSERT_EQ(rows.size(), 2U);
    EXPECT_EQ(rows[0], (ProcessShare{"worker 4321", 4321, 75.0}));
    EXPECT_EQ(rows[1], (ProcessShare{"worker 1234", 1234, 25.0}));
}

// ---- the units of the cgroup tree

struct ServicesFixture : ::testing::Test {
    testing::FixtureTree tree{""};
    const std::string firefox =
        "sys/fs/cgroup/user.slice/user-1000.slice/user@1000.service/app.slice/"
        "app-firefox.scope/cpu.stat";
    const std::string cron = "sys/fs/cgroup/system.slice/cron.service/cpu.stat";
    const std::string session = "sys/fs/cgroup/user.slice/user-1000.slice/session-2.scope/cpu.stat";

    void usage(const std::string& file, std::uint64_t usec) const {
        tree.write(file, "usage_usec " + std::to_string(usec) + "\nuser_usec 0\nsystem_usec 0\n");
    }
};

TEST_F(ServicesFixture, UnitsAreRankedFromTheReadingBeforeTheWindowStarts) {
    usage(firefox, 1'000'000);
    usage(cron, 5'000'000);
    usage(session, 0);
    tree.write("sys/fs/cgroup/system.slice/cpu.stat", "usage_usec 1\n");  // a slice, not a unit
    ServiceCounters services(tree.root());
    services.keep(at(0));
    EXPECT_EQ(services.unitCount(), 3U);
    usage(firefox, 2'400'000);
    usage(cron, 5'100'000);
    services.keep(at(5));  // not due yet: no reading
    services.keep(at(10));
    const auto rows = services.shares(at(0));
    ASSERT_EQ(rows.size(), 2U);
    EXPECT_EQ(rows[0].name, "user@1000.service/app-firefox.scope");
    EXPECT_DOUBLE_EQ(rows[0].percent, 14.0);
    EXPECT_EQ(rows[1].name, "cron.service");
    EXPECT_DOUBLE_EQ(rows[1].percent, 1.0);
}

TEST_F(ServicesFixture, WithoutACgroupTreeThereAreNoUnitsAndNoRows) {
    ServiceCounters services(tree.root());
    services.keep(at(0));
    services.keep(at(20), true);
    EXPECT_EQ(services.unitCount(), 0U);
    EXPECT_TRUE(services.shares(at(0)).empty());
}

// ---- nothing per-process at NORMAL, through the whole collector

TEST(HeatCauseCollector, AtNormalNoProcessFileIsOpenedAndARiseScansAtOnce) {
    testing::FixtureTree machine("intel_laptop");
    machine.write("proc/uptime", "10000.00 1000.00\n");
    for (int pid = 100; pid < 110; ++pid) {
        machine.write("proc/" + std::to_string(pid) + "/stat",
                      statLine(FakeProcess{pid, "p" + std::to_string(pid), 'R', 1, 0x400000,
                                           hz * 10, 0, 0, 0, 100 * hz}));
    }
    int opens = 0;
    auto reader = std::make_unique<LinuxCauseReader>(machine.root(), LinuxCauseReader::LoadGpu{},
                                                     [&opens](int dir, const char* path) {
                                                         ++opens;
                                                         return ::openat(dir, path, O_RDONLY);
                                                     });
    HeatCollector collector(std::make_unique<LinuxBackend>(machine.root()));
    collector.setCauseTracker(std::make_unique<HeatCauseTracker>(std::move(reader)));
    collector.forcedThermal = ThermalState::nominal;
    for (int second = 0; second < 5; ++second) {
        EXPECT_EQ(collector.sample(Timestamp::now()).heatCause, std::nullopt);
    }
    EXPECT_EQ(opens, 0);
    collector.forcedThermal = ThermalState::serious;
    const auto risen = collector.sample(Timestamp::now());
    EXPECT_EQ(opens, 10);
    ASSERT_TRUE(risen.heatCause);
    EXPECT_EQ(risen.heatCause->rise, (LevelRise{Level::ok, Level::extreme}));
    collector.forcedThermal = ThermalState::nominal;
    EXPECT_EQ(collector.sample(Timestamp::now()).heatCause, std::nullopt);
    EXPECT_EQ(opens, 10);
}

}  // namespace
}  // namespace velmora
