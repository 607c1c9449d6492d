#pragma once

#include <optional>
#include <string>

#include "policy/duration.hpp"

namespace velmora {

/// Where the temperature that drives the thermal state is heading.
enum class ForecastKind {
    /// It will reach its critical limit (`Forecast::eta` says when).
    critical,
    /// It rises toward a level more than 2 °C under the limit (`Forecast::levelC`).
    levelling,
    /// Nothing rises.
    steady,
};

/// An advisory estimate of the time until the hottest source reaches its critical limit. It
/// informs the user only: it never starts, shortens or cancels a countdown and never changes
/// the level.
struct Forecast {
    ForecastKind kind = ForecastKind::steady;
    /// Time until the limit, never negative; critical only.
    std::optional<Seconds> eta;
    /// The level the temperature approaches: levelling, and critical when the first-order fit
    /// was chosen.
    std::optional<double> levelC;
    /// The straight line's rise, when the line was chosen for a critical forecast.
    std::optional<double> risePerMinuteC;
    /// The source's short name ("CPU", "GPU"), for the log.
    std::string source;
    /// The latest reading and the limit it is judged against.
    double celsius = 0.0;
    double limitC = 0.0;

    bool operator==(const Forecast&) const = default;
};

/// Only ETAs under this are shown on the pages and in the tooltip.
inline constexpr Seconds forecastShownWithin{600};
/// An ETA under this is logged when it first appears.
inline constexpr Seconds forecastLoggedWithin{300};

/// The phrase for the tray's tooltip and the pages, lower case: "critical in about 4 min",
/// "critical in under a minute", "levelling off at 88 °C"; empty when there is nothing worth
/// saying (steady, or an ETA of 10 minutes or more).
std::string forecastPhrase(const Forecast& forecast);

/// The same phrase as a line of its own, with a capital: "Critical in about 4 min".
std::string forecastHeadline(const Forecast& forecast);

/// Whether the forecast expects the limit within `within`.
bool criticalWithin(const std::optional<Forecast>& forecast, Seconds within);

/// "forecast: critical in about 240 s (CPU 91 °C, rising toward 104 °C; limit 100 °C)".
std::string forecastLogLine(const Forecast& forecast);

/// "forecast: no longer heading for critical (CPU 86 °C)".
std::string forecastClearedLine(const std::string& source, double celsius);

}  // namespace velmora
