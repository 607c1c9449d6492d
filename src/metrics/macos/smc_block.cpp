#include "metrics/macos/smc_block.hpp"

#include <algorithm>

namespace velmora {

namespace {

// Offsets of the kernel's record; the gaps (10, 37-39, 43) are alignment.
enum Offset : std::size_t {
    kKey = 0,
    kVersionMajor = 4,
    kVersionMinor = 5,
    kVersionBuild = 6,
    kVersionReserved = 7,
    kVersionRelease = 8,
    kPowerLimitVersion = 12,
    kPowerLimitLength = 14,
    kCpuPowerLimit = 16,
    kGpuPowerLimit = 20,
    kMemoryPowerLimit = 24,
    kDataSize = 28,
    kDataType = 32,
    kDataAttributes = 36,
    kResult = 40,
    kStatus = 41,
    kCommand = 42,
    kIndex = 44,
    kBytes = 48,
};

template <typename T>
void put(SMCBlockBytes& out, std::size_t offset, T value) {
    for (std::size_t i = 0; i < sizeof(T); ++i) {
        out.at(offset + i) =
            static_cast<std::uint8_t>(static_cast<std::uint64_t>(value) >> (8 * i));
    }
}

template <typename T>
T get(const SMCBlockBytes& in, std::size_t offset) {
    std::uint64_t value = 0;
    for (std::size_t i = 0; i < sizeof(T); ++i) {
        value |= static_cast<std::uint64_t>(in.at(offset + i)) << (8 * i);
    }
    return static_cast<T>(value);
}

}  // namespace

SMCBlockBytes encodeSMCBlock(const SMCParamBlock& b) {
    SMCBlockBytes out{};
    put(out, kKey, b.key);
    put(out, kVersionMajor, b.versionMajor);
    put(out, kVersionMinor, b.versionMinor);
    put(out, kVersionBuild, b.versionBuild);
    put(out, kVersionReserved, b.versionReserved);
    put(out, kVersionRelease, b.versionRelease);
    put(out, kPowerLimitVersion, b.powerLimitVersion);
    put(out, kPowerLimitLength, b.powerLimitLength);
    put(out, kCpuPowerLimit, b.cpuPowerLimit);
    put(out, kGpuPowerLimit, b.gpuPowerLimit);
    put(out, kMemoryPowerLimit, b.memoryPowerLimit);
    put(out, kDataSize, b.dataSize);
    put(out, kDataType, b.dataType);
    put(out, kDataAttributes, b.dataAttributes);
    put(out, kResult, b.result);
    put(out, kStatus, b.status);
    put(out, kCommand, b.command);
    put(out, kIndex, b.index);
    std::copy(b.bytes.begin(), b.bytes.end(), out.begin() + kBytes);
    return out;
}

SMCParamBlock decodeSMCBlock(const SMCBlockBytes& in) {
    SMCParamBlock b;
    b.key = get<std::uint32_t>(in, kKey);
    b.versionMajor = get<std::uint8_t>(in, kVersionMajor);
    b.versionMinor = get<std::uint8_t>(in, kVersionMinor);
    b.versionBuild = get<std::uint8_t>(in, kVersionBuild);
    b.versionReserved = get<std::uint8_t>(in, kVersionReserved);
    b.versionRelease = get<std::uint16_t>(in, kVersionRelease);
    b.powerLimitVersion = get<std::uint16_t>(in, kPowerLimitVersion);
    b.powerLimitLength = get<std::uint16_t>(in, kPowerLimitLength);
    b.cpuPowerLimit = get<std::uint32_t>(in, kCpuPowerLimit);
    b.gpuPowerLimit = get<std::uint32_t>(in, kGpuPowerLimit);
    b.memoryPowerLimit = get<std::uint32_t>(in, kMemoryPowerLimit);
    b.dataSize = get<std::uint32_t>(in, kDataSize);
    b.dataType = get<std::uint32_t>(in, kDataType);
    b.dataAttributes = get<std::uint8_t>(in, kDataAttributes);
    b.result = get<std::uint8_t>(in, kResult);
    b.status = get<std::uint8_t>(in, kStatus);
    b.command = get<std::uint8_t>(in, kCommand);
    b.index = get<std::uint32_t>(in, kIndex);
    std::copy(in.begin() + kBytes, in.end(), b.bytes.begin());
    return b;
}

std::uint32_t fourCharCode(std::string_view text) {
    std::uint32_t code = 0;
    for (const char c : text.substr(0, 4))
        code = code * 256 + static_cast<std::uint8_t>(c);
    return code;
}

std::string fourCharString(std::uint32_t code) {
    std::string text;
    for (int shift = 24; shift >= 0; shift -= 8) {
        const auto byte = static_cast<std::uint8_t>(code >> shift);
        if (byte >= 0x80) return {};
        text.push_back(static_cast<char>(byte));
    }
    return text;
}

}  // namespace velmora
