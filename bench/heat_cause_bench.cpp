// What finding the heat's cause costs. One scan (every /proc/PID/stat read, ranked, and the
// units' cpu.stat read) over generated trees of 500 and 5,000 processes with 60 units; targets:
// at most 5 ms of CPU at 500 processes and 40 ms at 5,000. And the cost of one sample at
// NORMAL, where only the units' counters are kept (read every ten seconds). The trees are
// written to a temporary directory when the program starts.
#include <benchmark/benchmark.h>
#include <stdlib.h>

#include <filesystem>
#include <fstream>
#include <map>
#include <memory>
#include <string>

#include "metrics/heat_cause_tracker.hpp"
#include "metrics/linux/linux_cause_reader.hpp"

namespace {

namespace fs = std::filesystem;
using velmora::HeatCauseTracker;
using velmora::Level;
using velmora::LinuxCauseReader;
using velmora::MonoTime;

void writeFile(const fs::path& path, const std::string& text) {
    fs::create_directories(path.parent_path());
    std::ofstream(path) << text;
}

std::string statLine(int pid, int utime) {
    return std::to_string(pid) + " (worker " + std::to_string(pid % 97) + ") S 1 1 1 0 -1 " +
           "4194304 10 0 0 0 " + std::to_string(utime) + " 7 0 0 20 0 1 0 " +
           std::to_string(100 + pid) +
           " 1000000 300 18446744073709551615 1 1 0 0 0 0 0 0 0 0 0 0 0 17 1 0 0 0 0 0\n";
}

fs::path makeTree(int processes) {
    std::string pattern = (fs::temp_directory_path() / "velmora-cause-bench-XXXXXX").string();
    if (::mkdtemp(pattern.data()) == nullptr) return {};
    const fs::path root = pattern;
    writeFile(root / "proc/uptime", "100000.00 190000.00\n");
    for (int i = 0; i < processes; ++i) {
        const int pid = 1000 + i;
        writeFile(root / "proc" / std::to_string(pid) / "stat", statLine(pid, i % 500));
    }
    const fs::path cgroup = root / "sys/fs/cgroup";
    for (int i = 0; i < 40; ++i) {
        writeFile(cgroup / "system.slice" / ("unit" + std::to_string(i) + ".service") / "cpu.stat",
                  "usage_usec " + std::to_string(1000000 * i) + "\nuser_usec 0\nsystem_usec 0\n");
    }
    const fs::path user = cgroup / "user.slice/user-1000.slice/user@1000.service/app.slice";
    for (int i = 0; i < 20; ++i) {
        writeFile(user / ("app-" + std::to_string(i) + ".scope") / "cpu.stat",
                  "usage_usec " + std::to_string(500000 * i) + "\n");
    }
    return root;
}

// The generated trees, removed when the program ends.
struct Trees {
    std::map<int, fs::path> byCount;
    Trees() = default;
    Trees(const Trees&) = delete;
    Trees& operator=(const Trees&) = delete;
    ~Trees() {
        std::error_code ignored;
        for (const auto& [count, root] : byCount)
            fs::remove_all(root, ignored);
    }
};

const fs::path& treeOf(int processes) {
    static Trees trees;
    auto& tree = trees.byCount[processes];
    if (tree.empty()) tree = makeTree(processes);
    return tree;
}

void BM_ScanProcesses(benchmark::State& state) {
    const auto processes = static_cast<int>(state.range(0));
    LinuxCauseReader reader(treeOf(processes).string());
    double seconds = 10.0;
    reader.scan(MonoTime::fromSeconds(seconds - 5), MonoTime::fromSeconds(seconds));
    for (auto _ : state) {
        seconds += 5.0;
        auto cause =
            reader.scan(MonoTime::fromSeconds(seconds - 60), MonoTime::fromSeconds(seconds));
        benchmark::DoNotOptimize(cause);
    }
    state.SetLabel(std::to_string(processes) + " processes, 60 units");
}
BENCHMARK(BM_ScanProcesses)->Arg(500)->Arg(5000)->Unit(benchmark::kMillisecond);

// One sample at NORMAL: the temperature remembered and, every tenth second, the units read.
void BM_SampleAtNormal(benchmark::State& state) {
    HeatCauseTracker tracker(std::make_unique<LinuxCauseReader>(treeOf(500).string()));
    double seconds = 0.0;
    for (auto _ : state) {
        seconds += 1.0;
        auto cause = tracker.observe(Level::ok, 50.0, MonoTime::fromSeconds(seconds));
        benchmark::DoNotOptimize(cause);
    }
}
BENCHMARK(BM_SampleAtNormal)->Unit(benchmark::kMicrosecond);

}  // namespace
