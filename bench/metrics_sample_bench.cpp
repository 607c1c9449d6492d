// One Linux sample against generated sysfs/procfs trees of 10, 100 and 1,000 temperature
// sensors. The trees are written to a temporary directory when the program starts.
#include <benchmark/benchmark.h>
#include <stdlib.h>

#include <filesystem>
#include <fstream>
#include <map>
#include <memory>
#include <string>

#include "metrics/linux/linux_backend.hpp"

namespace {

namespace fs = std::filesystem;
using velmora::LinuxBackend;
using velmora::Timestamp;

void writeFile(const fs::path& path, const std::string& text) {
    fs::create_directories(path.parent_path());
    std::ofstream(path) << text;
}

std::string procStat(int cpus) {
    std::string text = "cpu  1000 10 500 90000 100 20 30 5 0 0\n";
    for (int i = 0; i < cpus; ++i) {
        text += "cpu" + std::to_string(i) + " 100 1 50 9000 10 2 3 0 0 0\n";
    }
    return text + "intr 1 2 3\nctxt 4\nbtime 5\nprocesses 6\n";
}

// Chips of eight temperatures each, every one with the limits the thermal state reads.
void writeHwmon(const fs::path& root, int sensors) {
    for (int i = 0; i < sensors; ++i) {
        const fs::path chip = root / "sys/class/hwmon" / ("hwmon" + std::to_string(i / 8));
        if (i % 8 == 0) writeFile(chip / "name", i == 0 ? "coretemp\n" : "nct6798\n");
        const std::string base = "temp" + std::to_string(i % 8 + 1);
        writeFile(chip / (base + "_input"), std::to_string(40000 + i * 7 % 30000) + "\n");
        writeFile(chip / (base + "_label"), "Sensor " + std::to_string(i) + "\n");
        writeFile(chip / (base + "_max"), "90000\n");
        writeFile(chip / (base + "_crit"), "100000\n");
    }
}

fs::path makeTree(int sensors) {
    std::string pattern = (fs::temp_directory_path() / "velmora-bench-XXXXXX").string();
    const fs::path root = ::mkdtemp(pattern.data());
    writeFile(root / "proc/stat", procStat(16));
    writeFile(root / "proc/meminfo", "MemTotal: 32000000 kB\nMemAvailable: 12000000 kB\n");
    writeFile(root / "proc/loadavg", "1.50 1.20 1.00 2/300 4000\n");
    writeFile(root / "proc/pressure/memory",
              "some avg10=0.00 avg60=0.00 avg300=0.00 total=0\n"
              "full avg10=0.00 avg60=0.00 avg300=0.00 total=0\n");
    writeFile(root / "sys/devices/system/cpu/online", "0-15\n");
    writeHwmon(root, sensors);
    return root;
}

// Built once per size, removed when the program ends.
struct Trees {
    std::map<int, fs::path> roots;
    ~Trees() {
        for (const auto& [n, root] : roots)
            fs::remove_all(root);
    }
    const fs::path& forSize(int n) {
        auto& root = roots[n];
        if (root.empty()) root = makeTree(n);
        return root;
    }
};

Trees& trees() {
    static Trees all;
    return all;
}

void BM_LinuxSample(benchmark::State& state) {
    const int sensors = static_cast<int>(state.range(0));
    LinuxBackend backend(trees().forSize(sensors).string());
    const Timestamp now = Timestamp::fromSeconds(1'700'000'000);
    backend.prime(now);
    for (auto _ : state)
        benchmark::DoNotOptimize(backend.sample(now));
    state.counters["sensors"] = sensors;
    // Time per sensor: iterations × sensors over the elapsed time, inverted.
    state.counters["per_sensor"] = benchmark::Counter(
        sensors, benchmark::Counter::kIsIterationInvariantRate | benchmark::Counter::kInvert);
    if (backend.discoveries() != 1) state.SkipWithError("the sample rediscovered its files");
}
BENCHMARK(BM_LinuxSample)->Arg(10)->Arg(100)->Arg(1000)->Unit(benchmark::kMicrosecond);

// A fixed number of samples, for counting system calls from outside (strace -c).
void BM_LinuxSampleFixedCount(benchmark::State& state) {
    LinuxBackend backend(trees().forSize(1000).string());
    const Timestamp now = Timestamp::fromSeconds(1'700'000'000);
    backend.prime(now);
    for (auto _ : state)
        benchmark::DoNotOptimize(backend.sample(now));
}
BENCHMARK(BM_LinuxSampleFixedCount)->Iterations(100)->Unit(benchmark::kMicrosecond);
BENCHMARK(BM_LinuxSampleFixedCount)->Iterations(200)->Unit(benchmark::kMicrosecond);

// A board that reports through thermal zones only, with a GPU's power and two batteries: the
// zones are listed and ranked for the CPU figure, the packs combined, every power figure read.
void writeZonesAndSupplies(const fs::path& root, int zones) {
    for (int i = 0; i < zones; ++i) {
        const fs::path zone = root / "sys/class/thermal" / ("thermal_zone" + std::to_string(i));
        writeFile(zone / "type", (i % 2 == 0 ? "cpu" : "soc") + std::to_string(i) + "-thermal\n");
        writeFile(zone / "temp", std::to_string(40000 + i * 7 % 30000) + "\n");
        writeFile(zone / "trip_point_0_type", "critical\n");
        writeFile(zone / "trip_point_0_temp", "110000\n");
        writeFile(zone / "trip_point_1_type", "active\n");
        writeFile(zone / "trip_point_1_temp", "50000\n");
    }
    const fs::path gpu = root / "sys/class/hwmon/hwmon0";
    writeFile(gpu / "name", "amdgpu\n");
    writeFile(gpu / "temp1_input", "50000\n");
    writeFile(gpu / "power1_average", "32114000\n");
    writeFile(root / "sys/class/power_supply/AC/type", "Mains\n");
    writeFile(root / "sys/class/power_supply/AC/online", "0\n");
    for (const char* name : {"BAT0", "BAT1"}) {
        const fs::path bat = root / "sys/class/power_supply" / name;
        writeFile(bat / "type", "Battery\n");
        writeFile(bat / "status", "Discharging\n");
        writeFile(bat / "capacity", "60\n");
        writeFile(bat / "energy_now", "30000000\n");
        writeFile(bat / "energy_full", "50000000\n");
        writeFile(bat / "power_now", "5000000\n");
        writeFile(bat / "voltage_now", "11500000\n");
    }
}

void BM_LinuxSampleZonesAndSupplies(benchmark::State& state) {
    const int zones = static_cast<int>(state.range(0));
    std::string pattern = (fs::temp_directory_path() / "velmora-bench-XXXXXX").string();
    const fs::path root = ::mkdtemp(pattern.data());
    writeFile(root / "proc/stat", procStat(4));
    writeZonesAndSupplies(root, zones);
    {
        LinuxBackend backend(root.string());
        const Timestamp now = Timestamp::fromSeconds(1'700'000'000);
        backend.prime(now);
        for (auto _ : state)
            benchmark::DoNotOptimize(backend.sample(now));
        state.counters["zones"] = zones;
        if (backend.discoveries() != 1) state.SkipWithError("the sample rediscovered its files");
    }
    fs::remove_all(root);
}
BENCHMARK(BM_LinuxSampleZonesAndSupplies)->Arg(4)->Arg(64)->Unit(benchmark::kMicrosecond);

}  // namespace
