// The cost of the actuators' own work around a request: classifying the tool's answer and
// starting, waiting for and reading one child process (here /bin/true, which answers at once).
#include <benchmark/benchmark.h>

#include <string>

#include "actuators/classify_osascript.hpp"
#include "actuators/script_runner.hpp"

namespace {

void BM_ClassifyRefusal(benchmark::State& state) {
    const std::string text =
        "  execution error: Not authorized to send Apple events to System Events. (-1743)\n";
    for (auto _ : state)
        benchmark::DoNotOptimize(velmora::classifyOsascript(1, text, false));
}
BENCHMARK(BM_ClassifyRefusal);

void BM_ClassifyOtherError(benchmark::State& state) {
    const std::string text = "execution error: System Events got an error: Connection is invalid.";
    for (auto _ : state)
        benchmark::DoNotOptimize(velmora::classifyOsascript(1, text, false));
}
BENCHMARK(BM_ClassifyOtherError);

void BM_RunChildThatAnswersAtOnce(benchmark::State& state) {
    const velmora::ScriptRunner runner("/bin/true");
    for (auto _ : state)
        benchmark::DoNotOptimize(runner.run("get name", velmora::Seconds(20)));
}
BENCHMARK(BM_RunChildThatAnswersAtOnce)->Unit(benchmark::kMicrosecond);

}  // namespace
