#include "app/icon/png_writer.hpp"

#include <zlib.h>

#include <array>
#include <stdexcept>
#include <string_view>

namespace velmora {

namespace {

void putBigEndian(std::vector<std::uint8_t>& out, std::uint32_t value) {
    for (const int shift : {24, 16, 8, 0})
        out.push_back(static_cast<std::uint8_t>((value >> shift) & 0xFFU));
}

void putChunk(std::vector<std::uint8_t>& out, std::string_view type,
              const std::vector<std::uint8_t>& data) {
    putBigEndian(out, static_cast<std::uint32_t>(data.size()));
    const std::size_t typeStart = out.size();
    out.insert(out.end(), type.begin(), type.end());
    out.insert(out.end(), data.begin(), data.end());
    // The checksum covers the type and the data, not the length.
    const auto crc = crc32(0L, out.data() + typeStart, static_cast<uInt>(out.size() - typeStart));
    putBigEndian(out, static_cast<std::uint32_t>(crc));
}

std::vector<std::uint8_t> header(const RgbaImage& image) {
    std::vector<std::uint8_t> data;
    putBigEndian(data, image.width);
    putBigEndian(data, image.height);
    data.insert(data.end(), {8, 6, 0, 0, 0});  // depth, RGBA, deflate, no filter, no interlace
    return data;
}

std::vector<std::uint8_t> compressedRows(const RgbaImage& image) {
    const std::size_t stride = std::size_t{image.width} * 4;
    std::vector<std::uint8_t> raw;
    raw.reserve((stride + 1) * image.height);
    for (std::uint32_t y = 0; y < image.height; ++y) {
        raw.push_back(0);  // filter type: none
        const auto* row = image.at(0, y);
        raw.insert(raw.end(), row, row + stride);
    }
    uLongf size = compressBound(static_cast<uLong>(raw.size()));
    std::vector<std::uint8_t> packed(size);
    if (compress2(packed.data(), &size, raw.data(), static_cast<uLong>(raw.size()),
                  Z_BEST_COMPRESSION) != Z_OK) {
        throw std::runtime_error("zlib could not compress the image");
    }
    packed.resize(size);
    return packed;
}

}  // namespace

std::vector<std::uint8_t> encodePng(const RgbaImage& image) {
    constexpr std::array<std::uint8_t, 8> signature{0x89, 'P', 'N', 'G', '\r', '\n', 0x1A, '\n'};
    std::vector<std::uint8_t> out(signature.begin(), signature.end());
    putChunk(out, "IHDR", header(image));
    putChunk(out, "IDAT", compressedRows(image));
    putChunk(out, "IEND", {});
    return out;
}

}  // namespace velmora
