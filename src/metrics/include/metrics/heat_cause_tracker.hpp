#pragma once

#include <array>
#include <chrono>
#include <cstddef>
#include <memory>
#include <optional>

#include "metrics/heat_cause.hpp"
#include "policy/level.hpp"
#include "policy/mono_time.hpp"

namespace velmora {

/// The platform's readers of what uses the machine. Called on the sampler's thread only.
class CauseReader {
  public:
    virtual ~CauseReader() = default;

    /// Keeps the cheap counters (the units' CPU time) that need a past; called on every sample,
    /// at every level, and reads no other process's files. The reader decides its own pace.
    virtual void keepCounters(MonoTime now) = 0;
    /// Reads every process once and ranks what used the machine over [windowStart, now].
    virtual HeatCause scan(MonoTime windowStart, MonoTime now) = 0;
    /// The machine is calm again: per-process records are dropped.
    virtual void forget() = 0;
};

/// Decides when the readers look at processes: never at NORMAL, at once on every rise of the
/// level, and every `scanEvery` while above NORMAL. Keeps the hottest temperature of the last
/// ten minutes to find where its climb started, which is where the window begins.
class HeatCauseTracker {
  public:
    static constexpr std::chrono::seconds scanEvery{5};
    static constexpr std::chrono::minutes longestWindow{10};
    /// A flat or unknown temperature still leaves a few seconds to measure over.
    static constexpr std::chrono::seconds shortestWindow{5};
    /// A dip smaller than this during a climb is sensor noise, not the climb's start.
    static constexpr double noiseC = 1.0;

    explicit HeatCauseTracker(std::unique_ptr<CauseReader> reader);

    /// One sample: the level it places the machine at and its hottest relevant temperature.
    /// Nothing at NORMAL; above it, the latest ranking, with `rise` set on a rise.
    std::optional<HeatCause> observe(Level level, std::optional<double> hottestC, MonoTime now);
    /// A fresh collector takes over at this level: reaching it again is no rise.
    void assumeLevel(Level level) { level_ = level; }
    /// Where the window begins: where the hottest temperature last started climbing, no more
    /// than `longestWindow` and no less than `shortestWindow` ago.
    MonoTime windowStart(MonoTime now) const;

  private:
    struct Point {
        MonoTime at;
        double celsius = 0.0;
    };
    // Ten minutes of one-second samples and the one they start from.
    static constexpr std::size_t kRingSize = 601;

    void remember(std::optional<double> hottestC, MonoTime now);
    const Point& pointBack(std::size_t back) const;

    std::unique_ptr<CauseReader> reader_;
    Level level_ = Level::ok;
    std::optional<MonoTime> lastScan_;
    std::optional<HeatCause> cause_;
    std::array<Point, kRingSize> ring_{};
    std::size_t ringNext_ = 0;
    std::size_t ringCount_ = 0;
};

}  // namespace velmora
