#pragma once

#include <cstdint>
#include <filesystem>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "app/core/shell.hpp"

namespace velmora {

/// One image of a StatusNotifierItem's IconPixmap: ARGB32, not premultiplied, in network byte
/// order, rows top to bottom.
struct FigurePixmap {
    int width = 0;
    int height = 0;
    std::vector<std::uint8_t> argb;
};

/// The sizes drawn for the panel: 16 to 24 px are what panels use, 32 for HiDPI ones.
inline constexpr int figureIconSizes[] = {16, 22, 24, 32};

/// The digits of a temperature as the icon shows them ("77", "101"); "--" without one.
std::string figureDigits(std::optional<double> celsius);

/// The temperature on a badge in the level's colour, with digits that contrast with it, so
/// that it reads on light and dark panels alike.
FigurePixmap drawFigureIcon(std::string_view digits, HeatColor color, int size);

/// The icon's name in the runtime folder, unique to the digits and the colour.
std::string figureIconName(std::string_view digits, HeatColor color);

/// A private folder in the user's runtime directory for the icons made while running, removed
/// with everything in it when this object goes.
class RuntimeIconDir {
  public:
    /// Makes `$XDG_RUNTIME_DIR/velmora-heat-monitor/tray-PID` (mode 0700); links `themeRoot`'s
    /// "hicolor" folder into it when given, so that the item's other icons are found there too.
    explicit RuntimeIconDir(const std::filesystem::path& themeRoot);
    ~RuntimeIconDir();
    RuntimeIconDir(const RuntimeIconDir&) = delete;
    RuntimeIconDir& operator=(const RuntimeIconDir&) = delete;
    RuntimeIconDir(RuntimeIconDir&&) = delete;
    RuntimeIconDir& operator=(RuntimeIconDir&&) = delete;

    /// Empty when the folder could not be made; `problem` says why.
    const std::filesystem::path& path() const { return path_; }
    const std::string& problem() const { return problem_; }
    /// Writes the 24 px PNG of that figure once; false when it could not be written.
    bool ensurePng(std::string_view digits, HeatColor color);

  private:
    std::filesystem::path path_;
    std::string problem_;
};

}  // namespace velmora
