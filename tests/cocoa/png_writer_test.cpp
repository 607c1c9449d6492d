#include <gtest/gtest.h>

#include <zlib.h>

#include <cstdint>
#include <string>

#include "app/icon/png_writer.hpp"

namespace velmora {
namespace {

std::uint32_t bigEndian(const std::vector<std::uint8_t>& bytes, std::size_t at) {
    return (std::uint32_t{bytes.at(at)} << 24) | (std::uint32_t{bytes.at(at + 1)} << 16) |
           (std::uint32_t{bytes.at(at + 2)} << 8) | std::uint32_t{bytes.at(at + 3)};
}

struct Chunk {
    std::string type;
    std::vector<std::uint8_t> data;
    bool crcMatches = false;
};

/// Reads the chunks after the signature, checking each checksum.
std::vector<Chunk> chunksOf(const std::vector<std::uint8_t>& png) {
    std::vector<Chunk> chunks;
    std::size_t at = 8;
    while (at + 12 <= png.size()) {
        const auto length = bigEndian(png, at);
        Chunk chunk;
        chunk.type.assign(png.begin() + static_cast<long>(at + 4),
                          png.begin() + static_cast<long>(at + 8));
        chunk.data.assign(png.begin() + static_cast<long>(at + 8),
                          png.begin() + static_cast<long>(at + 8 + length));
        const auto crc = crc32(0L, png.data() + at + 4, length + 4);
        chunk.crcMatches = crc == bigEndian(png, at + 8 + length);
        chunks.push_back(chunk);
        at += 12 + length;
    }
    return chunks;
}

RgbaImage sample() {
    RgbaImage image(3, 2);
    for (std::uint32_t y = 0; y < 2; ++y) {
        for (std::uint32_t x = 0; x < 3; ++x) {
            auto* p = image.at(x, y);
            p[0] = static_cast<std::uint8_t>(10 * x);
            p[1] = static_cast<std::uint8_t>(100 + y);
            p[2] = 200;
            p[3] = static_cast<std::uint8_t>(x == 1 ? 128 : 255);
        }
    }
    return image;
}

TEST(PngWriter, WritesTheSignatureAndHeaderDataAndEndChunksWithGoodChecksums) {
    const auto png = encodePng(sample());
    const std::vector<std::uint8_t> signature{0x89, 'P', 'N', 'G', '\r', '\n', 0x1A, '\n'};
    ASSERT_GT(png.size(), 8U);
    EXPECT_EQ(std::vector<std::uint8_t>(png.begin(), png.begin() + 8), signature);
    const auto chunks = chunksOf(png);
    ASSERT_EQ(chunks.size(), 3U);
    EXPECT_EQ(chunks[0].type, "IHDR");
    EXPECT_EQ(chunks[1].type, "IDAT");
    EXPECT_EQ(chunks[2].type, "IEND");
    for (const auto& chunk : chunks)
        EXPECT_TRUE(chunk.crcMatches) << chunk.type;
    const auto& header = chunks[0].data;
    ASSERT_EQ(header.size(), 13U);
    EXPECT_EQ(bigEndian(header, 0), 3U);
    EXPECT_EQ(bigEndian(header, 4), 2U);
    EXPECT_EQ(header[8], 8);  // bits per channel
    EXPECT_EQ(header[9], 6);  // RGBA
}

TEST(PngWriter, TheDataInflatesToUnfilteredRowsOfThePixels) {
    const auto image = sample();
    const auto idat = chunksOf(encodePng(image)).at(1).data;
    std::vector<std::uint8_t> raw(2 * (1 + 3 * 4));
    uLongf size = raw.size();
    ASSERT_EQ(uncompress(raw.data(), &size, idat.data(), idat.size()), Z_OK);
    ASSERT_EQ(size, raw.size());
    for (std::uint32_t y = 0; y < 2; ++y) {
        const std::size_t row = y * (1 + 12);
        EXPECT_EQ(raw[row], 0) << "filter of row " << y;
        for (std::uint32_t i = 0; i < 12; ++i)
            EXPECT_EQ(raw[row + 1 + i], image.pixels[y * 12 + i]);
    }
}

}  // namespace
}  // namespace velmora
