#pragma once

#include <array>
#include <cstdint>
#include <string>
#include <string_view>

namespace velmora {

/// The 80-byte record exchanged with the AppleSMC user client, as the kernel lays it out.
inline constexpr std::size_t kSMCBlockSize = 80;
using SMCBlockBytes = std::array<std::uint8_t, kSMCBlockSize>;

enum class SMCCommand : std::uint8_t { readBytes = 5, keyAtIndex = 8, readKeyInfo = 9 };

/// The one user-client method every SMC command goes through.
inline constexpr std::uint32_t kSMCSelector = 2;

struct SMCParamBlock {
    std::uint32_t key = 0;
    std::uint8_t versionMajor = 0;
    std::uint8_t versionMinor = 0;
    std::uint8_t versionBuild = 0;
    std::uint8_t versionReserved = 0;
    std::uint16_t versionRelease = 0;
    std::uint16_t powerLimitVersion = 0;
    std::uint16_t powerLimitLength = 0;
    std::uint32_t cpuPowerLimit = 0;
    std::uint32_t gpuPowerLimit = 0;
    std::uint32_t memoryPowerLimit = 0;
    std::uint32_t dataSize = 0;
    std::uint32_t dataType = 0;
    std::uint8_t dataAttributes = 0;
    std::uint8_t result = 0;
    std::uint8_t status = 0;
    std::uint8_t command = 0;
    std::uint32_t index = 0;
    std::array<std::uint8_t, 32> bytes{};
};

/// Integers in host (little-endian) order at the kernel's offsets; alignment bytes are zero.
SMCBlockBytes encodeSMCBlock(const SMCParamBlock& block);
SMCParamBlock decodeSMCBlock(const SMCBlockBytes& bytes);

/// Folds the first four UTF-8 bytes of a key or type, most significant first.
std::uint32_t fourCharCode(std::string_view text);

/// The code's four bytes, most significant first, as ASCII; "" when they are not ASCII.
std::string fourCharString(std::uint32_t code);

}  // namespace velmora
