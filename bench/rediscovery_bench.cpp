// Rediscovery against a generated sysfs tree of 1,000 temperature sensors (chips of eight): the
// check after a failed read when nothing changed (the target is at most 1 ms), a rediscovery
// after a device changed, which reuses the open descriptors, and a first discovery for scale.
#include <benchmark/benchmark.h>
#include <stdlib.h>

#include <filesystem>
#include <fstream>
#include <string>

#include "metrics/linux/linux_backend.hpp"

namespace {

namespace fs = std::filesystem;
using velmora::LinuxBackend;
using velmora::Timestamp;

constexpr int kSensors = 1000;

void writeFile(const fs::path& path, const std::string& text) {
    fs::create_directories(path.parent_path());
    std::ofstream(path) << text;
}

fs::path chipDir(const fs::path& root, int chip) {
    return root / "sys/class/hwmon" / ("hwmon" + std::to_string(chip));
}

struct Tree {
    fs::path root;
    Tree() {
        std::string pattern = (fs::temp_directory_path() / "velmora-bench-XXXXXX").string();
        root = ::mkdtemp(pattern.data());
        for (int i = 0; i < kSensors; ++i) {
            const fs::path chip = chipDir(root, i / 8);
            if (i % 8 == 0) writeFile(chip / "name", "nct6798\n");
            const std::string base = "temp" + std::to_string(i % 8 + 1);
            writeFile(chip / (base + "_input"), std::to_string(40000 + i * 7 % 30000) + "\n");
            writeFile(chip / (base + "_max"), "90000\n");
            writeFile(chip / (base + "_crit"), "100000\n");
        }
    }
    ~Tree() { fs::remove_all(root); }
    Tree(const Tree&) = delete;
    Tree& operator=(const Tree&) = delete;
};

Tree& tree() {
    static Tree once;
    return once;
}

const Timestamp kNow = Timestamp::fromSeconds(1'700'000'000);

void BM_RediscoveryCheckNothingChanged(benchmark::State& state) {
    LinuxBackend backend(tree().root.string());
    backend.prime(kNow);
    for (auto _ : state)
        benchmark::DoNotOptimize(backend.rediscoverIfChanged(kNow));
    if (backend.discoveries() != 1) state.SkipWithError("it rediscovered with nothing changed");
    state.counters["sensors"] = kSensors;
}
BENCHMARK(BM_RediscoveryCheckNothingChanged)->Unit(benchmark::kMicrosecond);

void BM_RediscoveryAfterADeviceChanged(benchmark::State& state) {
    LinuxBackend backend(tree().root.string());
    backend.prime(kNow);
    const fs::path marker = chipDir(tree().root, 0) / "touched";
    bool present = false;
    for (auto _ : state) {
        state.PauseTiming();
        // Adding or removing a file changes the chip directory: the check must see it.
        if (present) {
            fs::remove(marker);
        } else {
            writeFile(marker, "x");
        }
        present = !present;
        state.ResumeTiming();
        benchmark::DoNotOptimize(backend.rediscoverIfChanged(kNow));
    }
    fs::remove(marker);
    if (backend.discoveries() < 2) state.SkipWithError("the change was not seen");
    state.counters["sensors"] = kSensors;
}
BENCHMARK(BM_RediscoveryAfterADeviceChanged)->Unit(benchmark::kMillisecond);

void BM_FirstDiscovery(benchmark::State& state) {
    for (auto _ : state) {
        LinuxBackend backend(tree().root.string());
        backend.prime(kNow);
        benchmark::DoNotOptimize(backend.discoveries());
    }
    state.counters["sensors"] = kSensors;
}
BENCHMARK(BM_FirstDiscovery)->Unit(benchmark::kMillisecond);

}  // namespace
