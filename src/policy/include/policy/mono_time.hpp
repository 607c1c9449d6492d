#pragma once

#include <compare>

#include "policy/duration.hpp"

namespace velmora {

/// An instant on the monotonic clock: seconds since an arbitrary origin (the machine's boot on
/// Linux). Every interval the watchdog decides by (countdown, staleness, grace, failsafe,
/// repeats) is measured on it, so setting the wall clock never moves a deadline. It is kept apart
/// from the wall clock's `Timestamp` by type: the two cannot be mixed by accident.
struct MonoTime {
    using Seconds = velmora::Seconds;

    Seconds sinceOrigin{};

    static MonoTime now();
    static constexpr MonoTime fromSeconds(double secs) { return MonoTime{Seconds(secs)}; }
    /// Far before any real instant, yet finite, so that differences never overflow.
    static constexpr MonoTime distantPast() { return MonoTime{Seconds(-1.0e12)}; }

    constexpr double seconds() const { return sinceOrigin.count(); }

    // clang-tidy 14 mistakes the defaulted three-way comparison for a literal 0 pointer.
    constexpr auto operator<=>(const MonoTime&) const = default;  // NOLINT(modernize-use-nullptr)
};

/// The interval from `b` to `a`.
constexpr Seconds operator-(MonoTime a, MonoTime b) {
    return a.sinceOrigin - b.sinceOrigin;
}

constexpr MonoTime operator+(MonoTime t, Seconds span) {
    return MonoTime{t.sinceOrigin + span};
}

constexpr MonoTime operator-(MonoTime t, Seconds span) {
    return MonoTime{t.sinceOrigin - span};
}

}  // namespace velmora
