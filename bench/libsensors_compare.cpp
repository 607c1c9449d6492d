// A live sample of 100 temperature sensors against libsensors reading the same 100 values,
// on one generated tree. libsensors always reads /sys/class, so the program runs itself again
// in a private user and mount namespace (unshare -r -m) with the generated tree mounted over
// /sys/class; the watchdog reads the same files through its root prefix. Prints both times and
// their ratio (target: the watchdog's sample at most 0.25 of libsensors' time).
#include <benchmark/benchmark.h>
#include <sensors/sensors.h>
#include <stdlib.h>
#include <unistd.h>

#include <cstdio>
#include <filesystem>
#include <fstream>
#include <string>
#include <vector>

#include "metrics/linux/linux_backend.hpp"

namespace {

namespace fs = std::filesystem;
constexpr int kSensors = 100;
constexpr const char* kTreeVariable = "VELMORA_SENSORS_TREE";

void writeFile(const fs::path& path, const std::string& text) {
    fs::create_directories(path.parent_path());
    std::ofstream(path) << text;
}

// Ten chips of ten temperatures, each with a label and the limits both readers know.
fs::path makeTree() {
    std::string pattern = (fs::temp_directory_path() / "velmora-sensors-XXXXXX").string();
    const fs::path root = ::mkdtemp(pattern.data());
    for (int i = 0; i < kSensors; ++i) {
        const fs::path chip = root / "sys/class/hwmon" / ("hwmon" + std::to_string(i / 10));
        if (i % 10 == 0) writeFile(chip / "name", i == 0 ? "coretemp\n" : "nct6798\n");
        const std::string base = "temp" + std::to_string(i % 10 + 1);
        writeFile(chip / (base + "_input"), std::to_string(40000 + i * 7 % 30000) + "\n");
        writeFile(chip / (base + "_label"), "Sensor " + std::to_string(i) + "\n");
        writeFile(chip / (base + "_max"), "90000\n");
        writeFile(chip / (base + "_crit"), "100000\n");
    }
    return root;
}

void BM_WatchdogSample100(benchmark::State& state) {
    velmora::LinuxBackend backend(std::getenv(kTreeVariable));
    velmora::Timestamp now = velmora::Timestamp::fromSeconds(1'700'000'000);
    backend.prime(now);
    std::size_t read = 0;
    for (auto _ : state) {
        now = now + velmora::Seconds(1.0);
        read = backend.sample(now).sensors.size();
        benchmark::DoNotOptimize(read);
    }
    state.counters["sensors"] = static_cast<double>(read);
}
BENCHMARK(BM_WatchdogSample100);

// Every temperature input libsensors finds, read once per iteration.
void BM_Libsensors100(benchmark::State& state) {
    std::FILE* noConfig = std::fopen("/dev/null", "r");
    if (sensors_init(noConfig) != 0) {
        state.SkipWithError("sensors_init failed");
        return;
    }
    std::vector<std::pair<const sensors_chip_name*, int>> inputs;
    int chipIndex = 0;
    while (const sensors_chip_name* chip = sensors_get_detected_chips(nullptr, &chipIndex)) {
        int featureIndex = 0;
        while (const sensors_feature* feature = sensors_get_features(chip, &featureIndex)) {
            const sensors_subfeature* input =
                sensors_get_subfeature(chip, feature, SENSORS_SUBFEATURE_TEMP_INPUT);
            if (input) inputs.emplace_back(chip, input->number);
        }
    }
    for (auto _ : state) {
        double value = 0;
        for (const auto& [chip, number] : inputs) {
            sensors_get_value(chip, number, &value);
            benchmark::DoNotOptimize(value);
        }
    }
    state.counters["sensors"] = static_cast<double>(inputs.size());
    sensors_cleanup();
    std::fclose(noConfig);
}
BENCHMARK(BM_Libsensors100);

/// Prints each run and, at the end, the ratio of the two.
class RatioReporter : public benchmark::ConsoleReporter {
  public:
    void ReportRuns(const std::vector<Run>& runs) override {
        ConsoleReporter::ReportRuns(runs);
        for (const Run& run : runs) {
            const double ns = run.GetAdjustedRealTime();
            if (run.benchmark_name().find("Watchdog") != std::string::npos) watchdog_ = ns;
            if (run.benchmark_name().find("Libsensors") != std::string::npos) libsensors_ = ns;
        }
    }
    void Finalize() override {
        ConsoleReporter::Finalize();
        if (watchdog_ > 0 && libsensors_ > 0) {
            const double ratio = watchdog_ / libsensors_;
            std::printf("sample of %d sensors: watchdog / libsensors = %.3f (target <= 0.25: %s)\n",
                        kSensors, ratio, ratio <= 0.25 ? "met" : "NOT met");
        }
    }

  private:
    double watchdog_ = 0;
    double libsensors_ = 0;
};

}  // namespace

int main(int argc, char** argv) {
    if (!std::getenv(kTreeVariable)) {
        const fs::path tree = makeTree();
        ::setenv(kTreeVariable, tree.c_str(), 1);
        const std::string self = fs::read_symlink("/proc/self/exe").string();
        const std::string script = "mount --bind '" + (tree / "sys/class").string() +
                                   "' /sys/class && exec '" + self + "'";
        const int status = std::system(("unshare -r -m sh -c \"" + script + "\"").c_str());
        fs::remove_all(tree);
        if (status != 0) {
            std::fprintf(stderr,
                         "libsensors_compare: needs unprivileged user namespaces "
                         "(unshare -r -m); nothing measured\n");
        }
        return 0;
    }
    benchmark::Initialize(&argc, argv);
    RatioReporter reporter;
    benchmark::RunSpecifiedBenchmarks(&reporter);
    benchmark::Shutdown();
    return 0;
}
