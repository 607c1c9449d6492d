#include "metrics/macos/smc_block.hpp"

#include <gtest/gtest.h>

namespace velmora {
namespace {

// Every field gets a distinct byte pattern so that a field at the wrong offset shows.
SMCParamBlock patterned() {
    SMCParamBlock b;
    b.key = 0x11223344;
    b.versionMajor = 0x05;
    b.versionMinor = 0x06;
    b.versionBuild = 0x07;
    b.versionReserved = 0x08;
    b.versionRelease = 0x090A;
    b.powerLimitVersion = 0x0C0D;
    b.powerLimitLength = 0x0E0F;
    b.cpuPowerLimit = 0x10111213;
    b.gpuPowerLimit = 0x14151617;
    b.memoryPowerLimit = 0x18191A1B;
    b.dataSize = 0x1C1D1E1F;
    b.dataType = 0x20212223;
    b.dataAttributes = 0x24;
    b.result = 0x28;
    b.status = 0x29;
    b.command = 0x2A;
    b.index = 0x2C2D2E2F;
    for (std::size_t i = 0; i < b.bytes.size(); ++i)
        b.bytes[i] = static_cast<std::uint8_t>(0x80 + i);
    return b;
}

TEST(SMCParamBlock, IsEightyBytes) {
    EXPECT_EQ(sizeof(SMCBlockBytes), 80U);
}

TEST(SMCParamBlock, EveryFieldSitsAtItsOffsetInHostOrder) {
    const SMCBlockBytes bytes = encodeSMCBlock(patterned());
    const std::array<std::uint8_t, 48> head{
        0x44, 0x33, 0x22, 0x11,  // 0: key, little-endian
        0x05, 0x06, 0x07, 0x08,  // 4-7: version major, minor, build, reserved
        0x0A, 0x09,              // 8: version release
        0x00, 0x00,              // 10: alignment
        0x0D, 0x0C,              // 12: power-limit version
        0x0F, 0x0E,              // 14: power-limit length
        0x13, 0x12, 0x11, 0x10,  // 16: CPU power limit
        0x17, 0x16, 0x15, 0x14,  // 20: GPU power limit
        0x1B, 0x1A, 0x19, 0x18,  // 24: memory power limit
        0x1F, 0x1E, 0x1D, 0x1C,  // 28: data size
        0x23, 0x22, 0x21, 0x20,  // 32: data type
        0x24,                    // 36: data attributes
        0x00, 0x00, 0x00,        // 37: alignment
        0x28,                    // 40: result
        0x29,                    // 41: status
        0x2A,                    // 42: command
        0x00,                    // 43: alignment
        0x2F, 0x2E, 0x2D, 0x2C,  // 44: index
    };
    for (std::size_t i = 0; i < head.size(); ++i)
        EXPECT_EQ(bytes[i], head[i]) << "offset " << i;
    for (std::size_t i = 0; i < 32; ++i) {
        EXPECT_EQ(bytes[48 + i], 0x80 + i) << "value byte " << i;
    }
}

TEST(SMCParamBlock, DecodeReadsBackWhatEncodeWrote) {
    const SMCParamBlock original = patterned();
    const SMCParamBlock back = decodeSMCBlock(encodeSMCBlock(original));
    EXPECT_EQ(back.key, original.key);
    EXPECT_EQ(back.versionRelease, original.versionRelease);
    EXPECT_EQ(back.dataSize, original.dataSize);
    EXPECT_EQ(back.dataType, original.dataType);
    EXPECT_EQ(back.result, original.result);
    EXPECT_EQ(back.command, original.command);
    EXPECT_EQ(back.index, original.index);
    EXPECT_EQ(back.bytes, original.bytes);
}

TEST(SMCParamBlock, DefaultBlockIsAllZero) {
    const SMCBlockBytes bytes = encodeSMCBlock(SMCParamBlock{});
    for (const auto byte : bytes)
        EXPECT_EQ(byte, 0);
}

TEST(FourCharCode, FoldsMostSignificantFirst) {
    EXPECT_EQ(fourCharCode("TC0P"), 0x54433050U);
    EXPECT_EQ(fourCharCode("flt "), 0x666C7420U);
    EXPECT_EQ(fourCharCode("#KEY"), 0x234B4559U);
}

TEST(FourCharCode, ShortTextAddsNothingAndLongTextStopsAtFour) {
    EXPECT_EQ(fourCharCode("AB"), 0x4142U);
    EXPECT_EQ(fourCharCode(""), 0U);
    EXPECT_EQ(fourCharCode("TC0PX"), fourCharCode("TC0P"));
}

TEST(FourCharString, WritesTheFourBytesAsAscii) {
    EXPECT_EQ(fourCharString(0x54433050U), "TC0P");
    EXPECT_EQ(fourCharString(fourCharCode("ui8 ")), "ui8 ");
}

TEST(FourCharString, NonAsciiGivesEmptyText) {
    EXPECT_EQ(fourCharString(0x54C33050U), "");
}

}  // namespace
}  // namespace velmora
