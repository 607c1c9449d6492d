#include "metrics/temp_reading.hpp"

#include <cmath>

namespace velmora {

bool plausibleCelsius(double celsius) {
    return std::isfinite(celsius) && celsius > 1.0 && celsius < 150.0;
}

}  // namespace velmora
