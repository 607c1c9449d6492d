#pragma once

#include "store/store_error.hpp"

#include <optional>
#include <string>
#include <string_view>

namespace velmora {

/// Left in the data directory just before an automatic shutdown ("auto-shutdown.marker").
struct Marker {
    /// When the shutdown was started, as written by rfc3339.
    std::string at;
    /// The peak temperature that led to it, °C.
    double peakC = 0;
    std::string reason;

    bool operator==(const Marker&) const = default;
};

/// What the relief screen shows; never stored.
struct Relief {
    double peakC = 0;
    /// True after a cancelled countdown that has cooled; false after a marker found at launch.
    bool cancelled = false;

    bool operator==(const Relief&) const = default;
};

/// Stands in for a marker file that exists but cannot be read or decoded.
Marker unreadableMarker();

/// Compact JSON, keys in the order "at", "peakC", "reason". Fails for a non-finite peak
/// (JSON has no NaN or infinity) or texts that are not valid UTF-8.
StoreResult<std::string> encodeMarker(const Marker& marker);

/// Nothing unless `json` is an object with string "at", number "peakC" and string "reason".
std::optional<Marker> decodeMarker(std::string_view json);

}  // namespace velmora
