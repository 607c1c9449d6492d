#include "metrics/live_names.hpp"

#include <array>

#include "policy/constants.hpp"

namespace velmora {

std::string_view thermalName(ThermalState state) {
    switch (state) {
        case ThermalState::nominal:
            return "Nominal";
        case ThermalState::fair:
            return "Fair";
        case ThermalState::serious:
            return "Serious";
        case ThermalState::critical:
            return "Critical";
    }
    return "Critical";
}

Level liveLevel(ThermalState state) {
    const auto celsius = thermalStateToC(state);
    return band(celsius ? *celsius : watchdog::criticalC + 8.0);
}

std::string_view stageKey(Level level) {
    // The emergency's page key is not the level's own name.
    static constexpr std::array<std::string_view, 5> keys{"normal", "warm", "hot", "extreme",
                                                          "emergency"};
    return keys.at(static_cast<std::size_t>(rawValue(level)));
}

}  // namespace velmora
