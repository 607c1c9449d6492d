#pragma once

#include <cstdint>
#include <filesystem>
#include <optional>
#include <string>
#include <vector>

#include "app/icon/png_writer.hpp"

namespace velmora {

/// The application icon at `size` by `size` pixels: a white thermometer on a rounded square
/// that runs from amber at the top to red at the bottom, edges smoothed, transparent outside.
RgbaImage drawAppIcon(std::uint32_t size);

/// One picture of an icon set: its file name and its size in pixels.
struct IconSetEntry {
    std::string fileName;
    std::uint32_t pixels = 0;
};

/// The ten pictures the Mac's icon tools expect in an ".iconset" folder (16 to 512 points,
/// each also at double resolution).
std::vector<IconSetEntry> iconSetEntries();

/// Writes every picture of the icon set into `dir`, creating it; nothing on success, else
/// what went wrong.
std::optional<std::string> writeIconSet(const std::filesystem::path& dir);

}  // namespace velmora
