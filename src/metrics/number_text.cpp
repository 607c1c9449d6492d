#include "metrics/number_text.hpp"

#include <array>
#include <cmath>
#include <cstdio>

namespace velmora {

std::string fixedText(double value, int decimals) {
    std::array<char, 64> buffer{};
    const int written = std::snprintf(buffer.data(), buffer.size(), "%.*f", decimals, value);
    if (written < 0) return {};
    if (static_cast<std::size_t>(written) < buffer.size()) return {buffer.data()};
    // Only absurdly large values need more room.
    std::string wide(static_cast<std::size_t>(written) + 1, '\0');
    std::snprintf(wide.data(), wide.size(), "%.*f", decimals, value);
    wide.resize(static_cast<std::size_t>(written));
    return wide;
}

std::string wholeText(double value) {
    const double rounded = std::round(value);
    return fixedText(rounded == 0.0 ? 0.0 : rounded, 0);
}

}  // namespace velmora
