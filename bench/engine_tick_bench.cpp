// The poll timer calls Engine::tick four times a second for as long as the program runs, and
// the stage page receives the view as JSON each time; this measures that on a calm machine,
// with the settings file re-read from a real data directory as in production.
#include <benchmark/benchmark.h>

#include <cstdlib>
#include <filesystem>
#include <memory>
#include <nlohmann/json.hpp>
#include <stdexcept>
#include <string>

#include "engine/engine.hpp"
#include "store/settings_store.hpp"

namespace velmora {
namespace {

class CalmSensor final : public TempSensor {
  public:
    std::optional<double> readC() override { return 55.0; }  // the OS says "nominal"
};

class SilentSounder final : public Sounder {
  public:
    void alarm() override {}
    void urgent() override {}
    void tick() override {}
};

/// A calm machine never asks; reaching it would be a bug in the benchmark's premise.
class UnusedShutdowner final : public Shutdowner {
  public:
    void shutdown(ShutdownCompletion /*completion*/) override {
        throw std::logic_error("a calm machine must not shut down");
    }
    void probe(ProbeCompletion /*completion*/) override {
        throw std::logic_error("a calm machine must not probe");
    }
};

class CalmEngine {
  public:
    CalmEngine() {
        std::string pattern = std::filesystem::temp_directory_path() / "velmora-bench-XXXXXX";
        if (mkdtemp(pattern.data()) == nullptr) throw std::runtime_error("mkdtemp failed");
        dir_ = pattern;
        const SettingsStore store(dir_);
        if (store.save(Settings{true, true, "2027-01-14T09:30:00Z"})) {
            throw std::runtime_error("could not write the settings file");
        }
        engine_ = std::make_unique<Engine>(
            Engine::Parts{.sensor = std::make_shared<CalmSensor>(),
                          .settings = store,
                          .markers = MarkerStore(dir_),
                          .shutdowner = std::make_shared<UnusedShutdowner>(),
                          .sounder = std::make_shared<SilentSounder>(),
                          .log = [](const std::string& /*line*/) {}},
            MonoTime::fromSeconds(start_));
    }
    ~CalmEngine() {
        engine_.reset();
        std::error_code ignored;
        std::filesystem::remove_all(dir_, ignored);
    }
    CalmEngine(const CalmEngine&) = delete;
    CalmEngine& operator=(const CalmEngine&) = delete;

    Engine& engine() { return *engine_; }
    MonoTime next() { return MonoTime::fromSeconds(start_ + 0.25 * static_cast<double>(++ticks_)); }

  private:
    double start_ = 1'800'000'000;
    long long ticks_ = 0;
    std::filesystem::path dir_;
    std::unique_ptr<Engine> engine_;
};

void BM_CalmTickAndViewJson(benchmark::State& state) {
    CalmEngine calm;
    for (auto _ : state) {
        std::string json = calm.engine().tick(calm.next()).dump();
        benchmark::DoNotOptimize(json);
    }
}
BENCHMARK(BM_CalmTickAndViewJson);

void BM_CalmTickOnly(benchmark::State& state) {
    CalmEngine calm;
    for (auto _ : state) {
        auto view = calm.engine().tick(calm.next());
        benchmark::DoNotOptimize(view);
    }
}
BENCHMARK(BM_CalmTickOnly);

void BM_ViewJsonOnly(benchmark::State& state) {
    CalmEngine calm;
    const MonoTime now = calm.next();
    calm.engine().tick(now);
    for (auto _ : state) {
        std::string json = calm.engine().viewJson(now);
        benchmark::DoNotOptimize(json);
    }
}
BENCHMARK(BM_ViewJsonOnly);

}  // namespace
}  // namespace velmora
