#pragma once

#include <compare>

#include "policy/duration.hpp"

namespace velmora {

/// A wall-clock instant: seconds since the Unix epoch, with sub-second precision.
/// Differences are `Seconds`; the distant past stays finite so that subtracting it
/// from any real instant never overflows.
struct Timestamp {
    double secondsSinceEpoch = 0.0;

    static Timestamp now();
    static constexpr Timestamp fromSeconds(double secs) { return Timestamp{secs}; }
    /// 0001-01-01T00:00:00Z, the "never" of deadlines that have not been set.
    static constexpr Timestamp distantPast() { return Timestamp{-62135596800.0}; }

    // clang-tidy 14 mistakes the defaulted three-way comparison for a literal 0 pointer.
    constexpr auto operator<=>(const Timestamp&) const = default;  // NOLINT(modernize-use-nullptr)
};

/// The interval from `b` to `a`.
constexpr Seconds operator-(Timestamp a, Timestamp b) {
    return Seconds(a.secondsSinceEpoch - b.secondsSinceEpoch);
}

constexpr Timestamp operator+(Timestamp t, Seconds span) {
    return Timestamp{t.secondsSinceEpoch + span.count()};
}

constexpr Timestamp operator-(Timestamp t, Seconds span) {
    return Timestamp{t.secondsSinceEpoch - span.count()};
}

}  // namespace velmora
