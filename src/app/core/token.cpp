#include "app/core/token.hpp"

#include <array>
#include <cstdint>
#include <random>

namespace velmora {

std::string makeLaunchToken() {
    std::random_device entropy;
    std::array<std::uint8_t, 16> bytes{};
    for (auto& byte : bytes)
        byte = static_cast<std::uint8_t>(entropy() & 0xFFU);
    bytes[6] = static_cast<std::uint8_t>((bytes[6] & 0x0FU) | 0x40U);  // version 4
    bytes[8] = static_cast<std::uint8_t>((bytes[8] & 0x3FU) | 0x80U);  // RFC 4122 variant
    static constexpr char digits[] = "0123456789ABCDEF";
    std::string text;
    text.reserve(36);
    for (std::size_t i = 0; i < bytes.size(); ++i) {
        if (i == 4 || i == 6 || i == 8 || i == 10) text.push_back('-');
        text.push_back(digits[bytes[i] >> 4U]);
        text.push_back(digits[bytes[i] & 0x0FU]);
    }
    return text;
}

}  // namespace velmora
