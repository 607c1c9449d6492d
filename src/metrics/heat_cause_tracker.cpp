#include "metrics/heat_cause_tracker.hpp"

#include <algorithm>
#include <cmath>
#include <utility>

namespace velmora {

HeatCauseTracker::HeatCauseTracker(std::unique_ptr<CauseReader> reader)
    : reader_(std::move(reader)) {}

std::optional<HeatCause> HeatCauseTracker::observe(Level level, std::optional<double> hottestC,
                                                   MonoTime now) {
    remember(hottestC, now);
    reader_->keepCounters(now);
    if (level == Level::ok) {
        if (level_ != Level::ok) reader_->forget();
        level_ = level;
        lastScan_.reset();
        cause_.reset();
        return std::nullopt;
    }
    const bool rose = level_ < level;
    const Level from = level_;
    level_ = level;
    if (rose || !lastScan_ || now - *lastScan_ >= scanEvery) {
        cause_ = reader_->scan(windowStart(now), now);
        lastScan_ = now;
    }
    HeatCause shown = *cause_;
    shown.rise = rose ? std::optional(LevelRise{from, level}) : std::nullopt;
    return shown;
}

void HeatCauseTracker::remember(std::optional<double> hottestC, MonoTime now) {
    if (!hottestC || !std::isfinite(*hottestC)) return;
    ring_[ringNext_] = Point{now, *hottestC};
    ringNext_ = (ringNext_ + 1) % kRingSize;
    ringCount_ = std::min(ringCount_ + 1, kRingSize);
}

// back = 0 is the newest point.
const HeatCauseTracker::Point& HeatCauseTracker::pointBack(std::size_t back) const {
    return ring_[(ringNext_ + kRingSize - 1 - back) % kRingSize];
}

MonoTime HeatCauseTracker::windowStart(MonoTime now) const {
    const MonoTime earliest = now - Seconds(longestWindow);
    const MonoTime latest = now - Seconds(shortestWindow);
    if (ringCount_ == 0) return latest;
    // Walk back from now while the temperature was no higher than the lowest seen so far
    // (give or take noise); the climb started at the lowest point of that stretch.
    double lowest = pointBack(0).celsius;
    MonoTime start = pointBack(0).at;
    for (std::size_t back = 1; back < ringCount_; ++back) {
        const Point& point = pointBack(back);
        if (point.at < earliest || point.celsius > lowest + noiseC) break;
        if (point.celsius < lowest) {
            lowest = point.celsius;
            start = point.at;
        }
    }
    return std::clamp(start, earliest, latest);
}

}  // namespace velmora
