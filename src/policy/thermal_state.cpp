#include "policy/thermal_state.hpp"

#include <array>
#include <string>
#include <utility>

namespace velmora {

namespace {

constexpr std::array<std::pair<std::string_view, ThermalState>, 4> kNames{{
    {"nominal", ThermalState::nominal},
    {"fair", ThermalState::fair},
    {"serious", ThermalState::serious},
    {"critical", ThermalState::critical},
}};

}  // namespace

std::optional<double> thermalStateToC(ThermalState state) {
    switch (state) {
        case ThermalState::nominal:
            return 55.0;
        case ThermalState::fair:
            return 78.0;
        case ThermalState::serious:
            return 96.0;
        case ThermalState::critical:
            return 108.0;
    }
    return std::nullopt;
}

std::optional<ThermalState> thermalStateNamed(std::string_view name) {
    // Full Unicode lower-casing maps a non-ASCII code point to ASCII only for the Kelvin sign
    // (to "k"), and no state name has a "k"; so any byte outside ASCII, including every byte
    // of invalid UTF-8, can never match and is rejected before lower-casing.
    std::string lowered;
    lowered.reserve(name.size());
    for (const char c : name) {
        const auto byte = static_cast<unsigned char>(c);
        if (byte >= 0x80) return std::nullopt;
        lowered.push_back(static_cast<char>(byte >= 'A' && byte <= 'Z' ? byte - 'A' + 'a' : byte));
    }
    for (const auto& [known, state] : kNames) {
        if (lowered == known) return state;
    }
    return std::nullopt;
}

std::optional<std::string_view> thermalStateName(ThermalState state) {
    for (const auto& [known, candidate] : kNames) {
        if (candidate == state) return known;
    }
    return std::nullopt;
}

}  // namespace velmora
