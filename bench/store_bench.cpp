// The engine re-reads the settings file on every 0.25 s tick, and any thread may log at any
// time; both must stay far below a millisecond.
#include "store/file_logger.hpp"
#include "store/settings_store.hpp"

#include <benchmark/benchmark.h>

#include <stdlib.h>

#include <filesystem>
#include <string>

namespace {

using velmora::FileLogger;
using velmora::Settings;
using velmora::SettingsStore;

// A scratch data directory for one benchmark, removed afterwards.
struct ScratchDir {
    ScratchDir() {
        std::string pattern = std::filesystem::temp_directory_path() / "velmora-bench-XXXXXX";
        if (::mkdtemp(pattern.data()) != nullptr) path = pattern;
    }
    ~ScratchDir() {
        std::error_code ignored;
        if (!path.empty()) std::filesystem::remove_all(path, ignored);
    }
    ScratchDir(const ScratchDir&) = delete;
    ScratchDir& operator=(const ScratchDir&) = delete;
    std::filesystem::path path;
};

void settingsLoadOfASavedFile(benchmark::State& state) {
    const ScratchDir dir;
    const SettingsStore store(dir.path);
    if (store.save(Settings{false, true, "2026-11-14T23:47:13Z"})) {
        state.SkipWithError("could not save the settings");
        return;
    }
    for (auto _ : state)
        benchmark::DoNotOptimize(store.load());
}
BENCHMARK(settingsLoadOfASavedFile);

void settingsLoadWithoutAFile(benchmark::State& state) {
    const ScratchDir dir;
    const SettingsStore store(dir.path);
    for (auto _ : state)
        benchmark::DoNotOptimize(store.load());
}
BENCHMARK(settingsLoadWithoutAFile);

void settingsDecode(benchmark::State& state) {
    const std::string json =
        *velmora::encodeSettings(Settings{false, true, "2026-11-14T23:47:13Z"});
    for (auto _ : state)
        benchmark::DoNotOptimize(velmora::decodeSettings(json));
}
BENCHMARK(settingsDecode);

// What a caller pays per line: the timestamp and the hand-off to the writer thread.
void loggerCallerCost(benchmark::State& state) {
    const ScratchDir dir;
    FileLogger logger(dir.path);
    const std::string line = "stage-c: level HOT (ladder 96) since 12 s";
    for (auto _ : state)
        logger.log(line);
    logger.drain();
}
BENCHMARK(loggerCallerCost)->Iterations(100000);

}  // namespace
