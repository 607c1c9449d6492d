#include "engine/engine_text.hpp"

#include <cmath>

namespace velmora::engine_text {

std::string wholeDegrees(std::optional<double> celsius) {
    constexpr double limit = 1e15;  // far beyond any temperature, well inside long long
    if (!celsius || !std::isfinite(*celsius) || std::fabs(*celsius) > limit) return "n/a";
    return std::to_string(static_cast<long long>(*celsius));
}

}  // namespace velmora::engine_text
