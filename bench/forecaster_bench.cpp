// What the forecast adds to a sample on the sampler's thread: one reading into a full 240-s
// window. Most readings only add to the open 3-s bin; every third closes it and refits the
// window (a line, an exponential searched over tau, and the bend test). Read against the
// sample's own cost in metrics_sample_bench: the refit should stay well under a millisecond.
#include <benchmark/benchmark.h>

#include <cmath>

#include "policy/forecaster.hpp"

namespace velmora {
namespace {

double rising(double t) {
    return 104.0 - 50.0 * std::exp(-t / 120.0) + 0.3 * std::sin(t * 1.7);
}

void BM_ForecasterReading(benchmark::State& state) {
    Forecaster forecaster;
    double t = 0.0;
    for (; t < 300.0; t += 1.0)
        forecaster.add(MonoTime::fromSeconds(t), std::round(rising(t)), 100.0);
    for (auto _ : state) {
        forecaster.add(MonoTime::fromSeconds(t), std::round(rising(t)), 100.0);
        benchmark::DoNotOptimize(forecaster.current(MonoTime::fromSeconds(t)));
        t += 1.0;
        if (t > 1500.0) {
            state.PauseTiming();
            forecaster.restart();
            for (t = 0.0; t < 300.0; t += 1.0)
                forecaster.add(MonoTime::fromSeconds(t), std::round(rising(t)), 100.0);
            state.ResumeTiming();
        }
    }
}
BENCHMARK(BM_ForecasterReading);

}  // namespace
}  // namespace velmora
