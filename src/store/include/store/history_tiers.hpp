#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <type_traits>
#include <vector>

#include "policy/level.hpp"
#include "policy/thermal_state.hpp"

namespace velmora {

/// One reading as history keeps it. `time` is the wall clock in whole seconds since the Unix
/// epoch: history is read by people, by date.
struct HistorySample {
    std::int64_t time = 0;
    std::optional<Level> level;
    std::optional<ThermalState> thermal;
    std::optional<double> cpuTempC;
    std::optional<double> gpuTempC;
    std::optional<double> hottestC;
    std::optional<double> cpuPercent;
    std::optional<double> powerW;
    std::optional<double> fanRpm;
    std::optional<double> batteryPercent;
};

/// The figures a point keeps, in the order of the export's columns.
enum class HistorySeries : std::uint8_t {
    cpuTemp,
    gpuTemp,
    hottest,
    cpuPercent,
    power,
    fan,
    battery
};
inline constexpr std::size_t historySeriesCount = 7;

/// One series over one point: the lowest, the average and the highest reading.
struct HistoryFigure {
    double min = 0.0;
    double mean = 0.0;
    double max = 0.0;

    bool operator==(const HistoryFigure&) const = default;
};

/// One point as readers see it.
struct HistoryRow {
    /// The point's first sample, seconds since the Unix epoch: the start of its interval unless
    /// the watchdog began (or the clock was set) within it.
    std::int64_t time = 0;
    /// How many seconds the point covers: 1, 10, 60 or 900.
    std::int32_t resolution = 1;
    /// The highest level and the worst thermal state seen during the point.
    std::optional<Level> level;
    std::optional<ThermalState> thermal;
    std::array<std::optional<HistoryFigure>, historySeriesCount> figures{};
    /// The busiest process at the point's hottest moment above NORMAL.
    std::optional<std::string> busiest;

    const std::optional<HistoryFigure>& figure(HistorySeries series) const {
        return figures.at(static_cast<std::size_t>(series));
    }
};

/// One point in its compact form: scaled integers, the same bytes in memory and on disk.
/// A series with `count` 0 is absent; `level` and `thermal` use `absentCode`.
struct HistoryBucket {
    struct Stat {
        std::int32_t sum = 0;
        std::int16_t min = 0;
        std::int16_t max = 0;
        std::uint16_t count = 0;
        std::uint16_t unused = 0;
    };
    static constexpr std::uint8_t absentCode = 0xFF;
    static constexpr std::size_t nameBytes = 24;

    std::int64_t time = 0;
    std::array<Stat, historySeriesCount> stats{};
    /// The scaled hottest reading that came with `busiest`, to keep the name of the spike.
    std::int16_t busiestAt = 0;
    std::uint8_t level = absentCode;
    std::uint8_t thermal = absentCode;
    /// NUL-padded; empty when no name came with a sample.
    std::array<char, nameBytes> busiest{};
};
static_assert(sizeof(HistoryBucket) == 120);
static_assert(std::has_unique_object_representations_v<HistoryBucket>);
static_assert(std::is_trivially_copyable_v<HistoryBucket>);

/// A closed point as the rings keep it in memory: each series' lowest, average and highest
/// reading, 72 bytes. Bit i of `present` says series i was read at all.
struct HistoryPoint {
    static constexpr std::size_t nameBytes = 19;

    std::int64_t time = 0;
    std::array<std::int16_t, historySeriesCount> min{};
    std::array<std::int16_t, historySeriesCount> mean{};
    std::array<std::int16_t, historySeriesCount> max{};
    std::uint8_t level = HistoryBucket::absentCode;
    std::uint8_t thermal = HistoryBucket::absentCode;
    std::uint8_t present = 0;
    /// NUL-padded when shorter than the field.
    std::array<char, nameBytes> busiest{};

    static HistoryPoint of(const HistoryBucket& bucket);
    /// The bucket that reads back as this point (each series one sample of its mean).
    HistoryBucket bucket() const;
};
static_assert(sizeof(HistoryPoint) == 72);

/// One resolution of history: a ring of closed points allocated once, and the open point that
/// the current samples go into. Points are kept in the order they were closed; `pushed` counts
/// every point ever closed, so a point's number (from 1) tells its place in the ring.
class HistoryTier {
  public:
    HistoryTier(std::int32_t width, std::size_t capacity);

    std::int32_t width() const { return width_; }
    std::size_t capacity() const { return ring_.size(); }
    std::uint64_t pushed() const { return pushed_; }
    const std::optional<HistoryBucket>& open() const { return open_; }
    /// The closed point numbered `number`, when the ring still holds it.
    const HistoryPoint* point(std::uint64_t number) const;

    /// Adds one encoded sample; a sample of another interval closes the open point first.
    void add(const HistoryBucket& sample);

    /// Restores a closed point read back from disk; its number fixes its place.
    void restore(std::uint64_t number, const HistoryBucket& bucket);
    void restoreOpen(const HistoryBucket& bucket) { open_ = bucket; }

  private:
    void close();

    std::int32_t width_;
    std::vector<HistoryPoint> ring_;
    /// The number of the point in each slot; 0 for a slot never filled (or lost on disk).
    std::vector<std::uint64_t> numbers_;
    std::uint64_t pushed_ = 0;
    std::optional<HistoryBucket> open_;
};

/// A month of heat in fixed memory: 1 s for 15 minutes, 10 s for 2 hours, 1 minute for 24
/// hours and 15 minutes for 30 days, each coarser point keeping min, mean and max.
///
/// A wall-clock step backwards never scrambles the order: points keep the order they were
/// made in, and readers walk them newest first, keeping a point only when it is older than
/// every point kept so far. Points made before the step that lie after the new time are
/// therefore dropped: the clock that was corrected is the one that was wrong, and the rows
/// stay in increasing time order without being renumbered or clamped onto each other.
class HistoryStore {
  public:
    static constexpr std::size_t tierCount = 4;
    static constexpr std::array<std::int32_t, tierCount> widths{1, 10, 60, 900};
    static constexpr std::array<std::size_t, tierCount> capacities{900, 720, 1440, 2880};

    HistoryStore();

    /// Adds one sample to every tier. `busiest` names the busiest process when the level is
    /// above NORMAL; names are cut to 19 bytes at a character boundary.
    void add(const HistorySample& sample, std::optional<std::string_view> busiest);

    /// Every kept point at the finest resolution kept for its time, in increasing time order.
    /// A coarser point is used when it starts before the finer points do: it is the finest one
    /// kept for its first seconds.
    std::vector<HistoryRow> rows() const;
    /// The same, from `since` on.
    std::vector<HistoryRow> rowsSince(std::int64_t since) const;

    const HistoryTier& tier(std::size_t index) const { return tiers_.at(index); }
    HistoryTier& tier(std::size_t index) { return tiers_.at(index); }

  private:
    std::array<HistoryTier, tierCount> tiers_;
};

/// The reader's view of one compact point.
HistoryRow historyRow(const HistoryPoint& point, std::int32_t resolution);
HistoryRow historyRow(const HistoryBucket& bucket, std::int32_t resolution);

}  // namespace velmora
