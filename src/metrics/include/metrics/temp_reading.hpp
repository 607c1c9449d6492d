#pragma once

#include <string>

namespace velmora {

/// One temperature and where it came from ("SMC TC0P", "hwmon coretemp Package id 0", …).
struct TempReading {
    double celsius = 0.0;
    std::string source;

    bool operator==(const TempReading&) const = default;
};

/// One named sensor of the dashboard's sensor list.
struct NamedTemp {
    std::string name;
    double celsius = 0.0;
    std::string source;

    bool operator==(const NamedTemp&) const = default;
};

/// The common sanity bound of every live temperature: finite and strictly between 1 and 150 °C.
bool plausibleCelsius(double celsius);
/// The upper edge of that bound.
inline constexpr double kPlausibleCeiling = 150.0;

}  // namespace velmora
