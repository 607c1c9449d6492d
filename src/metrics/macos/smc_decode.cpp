#include <cstring>

#include "metrics/macos/smc.hpp"

namespace velmora {

std::optional<double> decodeSMCTemperature(std::string_view type,
                                           const std::vector<std::uint8_t>& bytes) {
    if (type == "sp78" && bytes.size() >= 2) {
        const auto raw = static_cast<std::int16_t>((bytes[0] << 8U) | bytes[1]);
        return raw / 256.0;
    }
    if (type == "fpe2" && bytes.size() >= 2) return ((bytes[0] << 8U) | bytes[1]) / 4.0;
    if (type == "flt " && bytes.size() >= 4) {
        // Unlike the integer types, the SMC hands floats over in the host's own byte order.
        float value = 0;
        std::memcpy(&value, bytes.data(), sizeof value);
        return static_cast<double>(value);
    }
    return std::nullopt;
}

std::optional<SMCClass> classifySMCKey(std::string_view key) {
    if (key.size() != 4 || !key.starts_with('T')) return std::nullopt;
    // Both exceptions are tested before the "TC" prefix would claim them.
    if (key == "TCGC") return SMCClass::gpu;
    if (key == "TCTD") return std::nullopt;
    for (const std::string_view prefix : {"TC", "Tp", "Te"}) {
        if (key.starts_with(prefix)) return SMCClass::cpu;
    }
    for (const std::string_view prefix : {"TG", "Tg"}) {
        if (key.starts_with(prefix)) return SMCClass::gpu;
    }
    return std::nullopt;
}

}  // namespace velmora
