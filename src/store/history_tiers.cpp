#include "store/history_tiers.hpp"

#include <algorithm>
#include <cmath>
#include <cstring>
#include <limits>

namespace velmora {

namespace {

// Hundredths of a degree, tenths of a percent or watt, whole revolutions per minute.
constexpr std::array<double, historySeriesCount> kScales{100.0, 100.0, 100.0, 10.0,
                                                         10.0,  1.0,   10.0};
constexpr std::size_t kHottest = static_cast<std::size_t>(HistorySeries::hottest);
constexpr std::uint16_t kMaxCount = std::numeric_limits<std::uint16_t>::max();

std::int16_t scaled(double value, double scale) {
    constexpr double low = std::numeric_limits<std::int16_t>::min();
    constexpr double high = std::numeric_limits<std::int16_t>::max();
    return static_cast<std::int16_t>(std::clamp(std::round(value * scale), low, high));
}

std::int64_t intervalStart(std::int64_t time, std::int32_t width) {
    const std::int64_t w = width;
    const std::int64_t q = time / w;
    return (time % w < 0 ? q - 1 : q) * w;
}

// Cuts at a character boundary so that a name never ends in half a UTF-8 sequence.
std::size_t fittingLength(std::string_view name, std::size_t room) {
    if (name.size() <= room) return name.size();
    std::size_t length = room;
    while (length > 0 && (static_cast<unsigned char>(name[length]) & 0xC0U) == 0x80U)
        --length;
    return length;
}

HistoryBucket encode(const HistorySample& sample, std::optional<std::string_view> busiest) {
    HistoryBucket bucket;
    bucket.time = sample.time;
    const std::array<const std::optional<double>*, historySeriesCount> values{
        &sample.cpuTempC, &sample.gpuTempC, &sample.hottestC,      &sample.cpuPercent,
        &sample.powerW,   &sample.fanRpm,   &sample.batteryPercent};
    for (std::size_t i = 0; i < historySeriesCount; ++i) {
        const auto& value = *values.at(i);
        if (!value || !std::isfinite(*value)) continue;
        const auto v = scaled(*value, kScales.at(i));
        bucket.stats.at(i) = HistoryBucket::Stat{v, v, v, 1, 0};
    }
    if (sample.level) bucket.level = static_cast<std::uint8_t>(rawValue(*sample.level));
    if (sample.thermal) bucket.thermal = static_cast<std::uint8_t>(*sample.thermal);
    if (busiest && !busiest->empty()) {
        const auto length = fittingLength(*busiest, HistoryPoint::nameBytes);
        std::copy_n(busiest->data(), length, bucket.busiest.begin());
        const auto& hottest = bucket.stats.at(kHottest);
        bucket.busiestAt =
            hottest.count > 0 ? hottest.max : std::numeric_limits<std::int16_t>::min();
    }
    return bucket;
}

std::uint8_t worse(std::uint8_t a, std::uint8_t b) {
    if (a == HistoryBucket::absentCode) return b;
    if (b == HistoryBucket::absentCode) return a;
    return std::max(a, b);
}

void merge(HistoryBucket::Stat& into, const HistoryBucket::Stat& from) {
    if (from.count == 0) return;
    if (into.count == 0) {
        into = from;
        return;
    }
    into.min = std::min(into.min, from.min);
    into.max = std::max(into.max, from.max);
    // A bucket holds at most a few thousand samples; past the counter's range the mean is
    // that of the first ones, which cannot overflow the sum.
    if (into.count > kMaxCount - from.count) return;
    into.sum += from.sum;
    into.count = static_cast<std::uint16_t>(into.count + from.count);
}

void merge(HistoryBucket& into, const HistoryBucket& sample) {
    for (std::size_t i = 0; i < historySeriesCount; ++i)
        merge(into.stats.at(i), sample.stats.at(i));
    into.level = worse(into.level, sample.level);
    into.thermal = worse(into.thermal, sample.thermal);
    // The name kept is the one seen at the interval's hottest moment: what ran at the spike.
    if (sample.busiest.front() != '\0' &&
        (into.busiest.front() == '\0' || sample.busiestAt >= into.busiestAt)) {
        into.busiest = sample.busiest;
        into.busiestAt = sample.busiestAt;
    }
}

std::optional<HistoryFigure> figureOf(const HistoryBucket::Stat& stat, double scale) {
    if (stat.count == 0) return std::nullopt;
    return HistoryFigure{stat.min / scale, stat.sum / scale / stat.count, stat.max / scale};
}

}  // namespace

HistoryPoint HistoryPoint::of(const HistoryBucket& bucket) {
    HistoryPoint point;
    point.time = bucket.time;
    point.level = bucket.level;
    point.thermal = bucket.thermal;
    for (std::size_t i = 0; i < historySeriesCount; ++i) {
        const auto& stat = bucket.stats.at(i);
        if (stat.count == 0) continue;
        point.present = static_cast<std::uint8_t>(point.present | (1U << i));
        point.min.at(i) = stat.min;
        point.max.at(i) = stat.max;
        point.mean.at(i) = static_cast<std::int16_t>(
            std::lround(static_cast<double>(stat.sum) / static_cast<double>(stat.count)));
    }
    std::copy_n(bucket.busiest.begin(), nameBytes, point.busiest.begin());
    return point;
}

HistoryBucket HistoryPoint::bucket() const {
    HistoryBucket out;
    out.time = time;
    out.level = level;
    out.thermal = thermal;
    for (std::size_t i = 0; i < historySeriesCount; ++i) {
        if ((present & (1U << i)) == 0) continue;
        out.stats.at(i) = HistoryBucket::Stat{mean.at(i), min.at(i), max.at(i), 1, 0};
    }
    std::copy_n(busiest.begin(), nameBytes, out.busiest.begin());
    return out;
}

HistoryRow historyRow(const HistoryPoint& point, std::int32_t resolution) {
    HistoryRow row;
    row.time = point.time;
    row.resolution = resolution;
    if (point.level != HistoryBucket::absentCode) row.level = levelFromRaw(point.level);
    if (point.thermal <= static_cast<std::uint8_t>(ThermalState::critical)) {
        row.thermal = static_cast<ThermalState>(point.thermal);
    }
    for (std::size_t i = 0; i < historySeriesCount; ++i) {
        if ((point.present & (1U << i)) == 0) continue;
        const auto scale = kScales.at(i);
        row.figures.at(i) = HistoryFigure{point.min.at(i) / scale, point.mean.at(i) / scale,
                                          point.max.at(i) / scale};
    }
    const std::string_view text(point.busiest.data(),
                                ::strnlen(point.busiest.data(), HistoryPoint::nameBytes));
    if (!text.empty()) row.busiest = std::string(text);
    return row;
}

HistoryRow historyRow(const HistoryBucket& bucket, std::int32_t resolution) {
    // The open point keeps its exact mean: the rows show it unrounded until it closes.
    auto row = historyRow(HistoryPoint::of(bucket), resolution);
    for (std::size_t i = 0; i < historySeriesCount; ++i)
        row.figures.at(i) = figureOf(bucket.stats.at(i), kScales.at(i));
    return row;
}

HistoryTier::HistoryTier(std::int32_t width, std::size_t capacity)
    : width_(width), ring_(capacity), numbers_(capacity, 0) {}

const HistoryPoint* HistoryTier::point(std::uint64_t number) const {
    if (number == 0) return nullptr;
    const auto slot = static_cast<std::size_t>((number - 1) % ring_.size());
    return numbers_[slot] == number ? &ring_[slot] : nullptr;
}

void HistoryTier::add(const HistoryBucket& sample) {
    // A point is dated by its first sample: the start of its interval when the watchdog ran
    // through it, never a moment before the first reading.
    if (open_ && intervalStart(open_->time, width_) != intervalStart(sample.time, width_)) close();
    if (!open_) {
        open_ = sample;
        return;
    }
    merge(*open_, sample);
}

void HistoryTier::close() {
    ++pushed_;
    const auto slot = static_cast<std::size_t>((pushed_ - 1) % ring_.size());
    ring_[slot] = HistoryPoint::of(*open_);
    numbers_[slot] = pushed_;
    open_.reset();
}

void HistoryTier::restore(std::uint64_t number, const HistoryBucket& bucket) {
    if (number == 0) return;
    const auto slot = static_cast<std::size_t>((number - 1) % ring_.size());
    ring_[slot] = HistoryPoint::of(bucket);
    numbers_[slot] = number;
    pushed_ = std::max(pushed_, number);
}

HistoryStore::HistoryStore()
    : tiers_{HistoryTier(widths[0], capacities[0]), HistoryTier(widths[1], capacities[1]),
             HistoryTier(widths[2], capacities[2]), HistoryTier(widths[3], capacities[3])} {}

void HistoryStore::add(const HistorySample& sample, std::optional<std::string_view> busiest) {
    const auto encoded = encode(sample, busiest);
    for (auto& tier : tiers_)
        tier.add(encoded);
}

std::vector<HistoryRow> HistoryStore::rows() const {
    return rowsSince(std::numeric_limits<std::int64_t>::min());
}

std::vector<HistoryRow> HistoryStore::rowsSince(std::int64_t since) const {
    std::vector<HistoryRow> newestFirst;
    // Every kept row is older than all rows kept before it: finer tiers come first, so a
    // coarser point is used only for the times no finer one covers.
    auto floor = std::numeric_limits<std::int64_t>::max();
    bool done = false;
    auto consider = [&](const auto& point, std::int32_t width) {
        if (point.time >= floor) return;
        if (point.time < since) {
            done = true;
            return;
        }
        newestFirst.push_back(historyRow(point, width));
        floor = point.time;
    };
    for (const auto& tier : tiers_) {
        if (tier.open()) consider(*tier.open(), tier.width());
        const auto oldest = tier.pushed() > tier.capacity() ? tier.pushed() - tier.capacity() : 0;
        for (auto number = tier.pushed(); number > oldest && !done; --number) {
            if (const auto* point = tier.point(number)) consider(*point, tier.width());
        }
        if (done) break;
    }
    std::reverse(newestFirst.begin(), newestFirst.end());
    return newestFirst;
}

}  // namespace velmora
