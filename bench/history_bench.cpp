// What the month of history costs: adding one sample to every tier (target: at most 2 µs),
// the resident memory of a full history (target: at most 1.5 MB), and a whole 30-day export
// from the file to CSV text (target: at most 200 ms).
#include <benchmark/benchmark.h>
#include <unistd.h>

#include <array>
#include <fstream>
#include <memory>
#include <string>

#include "store/history_csv.hpp"
#include "store/history_file.hpp"
#include "store/history_tiers.hpp"
#include "support/temp_dir.hpp"

namespace {

using velmora::HistorySample;
using velmora::HistoryStore;

constexpr std::int64_t kStart = 1'789'999'200;
constexpr std::int64_t kMonth = 31LL * 24 * 3600;

HistorySample sampleAt(std::int64_t time) {
    HistorySample s;
    s.time = time;
    s.level = velmora::Level::warm;
    s.thermal = velmora::ThermalState::fair;
    s.cpuTempC = 60.0 + static_cast<double>(time % 30);
    s.gpuTempC = 55.5;
    s.hottestC = 66.25 + static_cast<double>(time % 7);
    s.cpuPercent = static_cast<double>(time % 100);
    s.powerW = 23.4;
    s.fanRpm = 2100.0;
    s.batteryPercent = 80.0;
    return s;
}

/// A month of samples, one every 5 s (the tiers' rings are then all full), and a second per
/// second for the last 15 minutes.
void fillMonth(HistoryStore& store) {
    const auto fine = kStart + kMonth - 900;
    for (std::int64_t t = kStart; t < fine; t += 5)
        store.add(sampleAt(t), std::string_view("cc1plus"));
    for (std::int64_t t = fine; t < kStart + kMonth; ++t)
        store.add(sampleAt(t), std::string_view("cc1plus"));
}

long residentBytes() {
    std::ifstream statm("/proc/self/statm");
    long size = 0;
    long resident = 0;
    statm >> size >> resident;
    return resident * ::sysconf(_SC_PAGESIZE);
}

// The resident memory a full month adds to the process, read from /proc/self/statm. First, so
// that no memory freed by another benchmark is reused and left uncounted.
void BM_HistoryResidentMemory(benchmark::State& state) {
    long added = 0;
    for (auto _ : state) {
        const auto before = residentBytes();
        auto store = std::make_unique<HistoryStore>();
        fillMonth(*store);
        added = residentBytes() - before;
        benchmark::DoNotOptimize(store.get());
    }
    state.counters["resident_bytes"] = static_cast<double>(added);
    state.counters["store_bytes"] = static_cast<double>(
        sizeof(HistoryStore) + (HistoryStore::capacities[0] + HistoryStore::capacities[1] +
                                HistoryStore::capacities[2] + HistoryStore::capacities[3]) *
                                   (sizeof(velmora::HistoryPoint) + sizeof(std::uint64_t)));
}
BENCHMARK(BM_HistoryResidentMemory)->Iterations(1)->Unit(benchmark::kMillisecond);

void BM_HistoryAddSample(benchmark::State& state) {
    auto store = std::make_unique<HistoryStore>();
    fillMonth(*store);
    std::int64_t t = kStart + kMonth;
    for (auto _ : state) {
        store->add(sampleAt(t++), std::nullopt);
        benchmark::ClobberMemory();
    }
}
BENCHMARK(BM_HistoryAddSample);

void BM_HistoryAddSampleWithName(benchmark::State& state) {
    auto store = std::make_unique<HistoryStore>();
    std::int64_t t = kStart;
    for (auto _ : state) {
        store->add(sampleAt(t++), std::string_view("blender"));
        benchmark::ClobberMemory();
    }
}
BENCHMARK(BM_HistoryAddSampleWithName);

// Everything --export-history does after the switches: read and check the file, merge the
// tiers, write the CSV text.
void BM_HistoryExportMonth(benchmark::State& state) {
    velmora::testing::TempDir dir("history-bench");
    {
        auto opened = velmora::HistoryFile::open(dir.path(), 1);
        fillMonth(*opened.store);
        std::array<std::uint64_t, HistoryStore::tierCount> written{};
        if (opened.file->write(velmora::history_file::changedRecords(*opened.store, written),
                               false)) {
            state.SkipWithError("could not write the history file");
            return;
        }
    }
    std::size_t rows = 0;
    for (auto _ : state) {
        const auto reading = velmora::readHistory(dir.path());
        const auto all = reading.store->rows();
        rows = all.size();
        benchmark::DoNotOptimize(velmora::historyCsv(all));
    }
    state.counters["rows"] = static_cast<double>(rows);
}
BENCHMARK(BM_HistoryExportMonth)->Unit(benchmark::kMillisecond);

}  // namespace
