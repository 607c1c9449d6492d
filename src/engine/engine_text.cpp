#include "engine/engine_text.hpp"

#include <cmath>

namespace velmora::engine_text {

std::string integerPart(std::optional<double> value) {
    constexpr double limit = 1e15;  // far beyond any temperature, well inside long long
    if (!value || !std::isfinite(*value) || std::fabs(*value) > limit) return "n/a";
    return std::to_string(static_cast<long long>(*value));
}

std::string integerPart(Seconds span) {
    return integerPart(span.count());
}

}  // namespace velmora::engine_text
