#pragma once

#include "policy/timestamp.hpp"

#include <optional>
#include <string>
#include <string_view>

namespace velmora {

/// Internet date-time in UTC without fractional seconds, e.g. "2026-11-14T23:47:13Z".
/// Fractions are dropped (rounded toward the past). Instants outside years 0001-9999, and
/// non-finite ones, are clamped to that range so the text always has four-digit years.
std::string rfc3339(Timestamp instant);

/// Reads "YYYY-MM-DDTHH:MM:SS" followed by "Z" or a "+HH:MM"/"-HH:MM" offset; nothing for
/// any other text (fractional seconds, a missing zone, an impossible date or time).
std::optional<Timestamp> parseRFC3339(std::string_view text);

}  // namespace velmora
