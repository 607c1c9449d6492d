#pragma once

namespace velmora {

/// Screen pixels as the toolkit counts them: origin top left, y growing downwards.
struct ScreenRect {
    int x = 0;
    int y = 0;
    int width = 0;
    int height = 0;
};

struct ScreenPoint {
    int x = 0;
    int y = 0;
    bool operator==(const ScreenPoint&) const = default;
};

/// Gap between the popup and the edges of the work area.
inline constexpr int popupMargin = 4;

/// Where a popup of `width` × `height` goes: in the corner of `workArea` nearest `pointer`
/// (where the panel and its tray are), `popupMargin` in from the edges, never outside the
/// work area's top left.
ScreenPoint popupOrigin(const ScreenRect& workArea, ScreenPoint pointer, int width, int height);

}  // namespace velmora
