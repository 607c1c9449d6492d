#pragma once

#include <cstdint>
#include <vector>

namespace velmora {

/// Straight-alpha RGBA pixels, 8 bits a channel, rows from the top.
struct RgbaImage {
    std::uint32_t width = 0;
    std::uint32_t height = 0;
    std::vector<std::uint8_t> pixels;  // width * height * 4

    RgbaImage(std::uint32_t w, std::uint32_t h)
        : width(w), height(h), pixels(std::size_t{w} * h * 4, 0) {}
    std::uint8_t* at(std::uint32_t x, std::uint32_t y) {
        return pixels.data() + (std::size_t{y} * width + x) * 4;
    }
    const std::uint8_t* at(std::uint32_t x, std::uint32_t y) const {
        return pixels.data() + (std::size_t{y} * width + x) * 4;
    }
};

/// The image as a PNG file (colour type 6, no interlace, rows unfiltered, deflate by zlib).
std::vector<std::uint8_t> encodePng(const RgbaImage& image);

}  // namespace velmora
