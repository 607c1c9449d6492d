#pragma once

#include <optional>

namespace velmora {

/// Points, with the origin at the bottom left and y growing upwards (the AppKit convention;
/// shells whose toolkit counts from the top convert at their edge).
struct Size {
    double width = 0;
    double height = 0;
    bool operator==(const Size&) const = default;
};

struct Rect {
    double x = 0;
    double y = 0;
    double width = 0;
    double height = 0;
    bool operator==(const Rect&) const = default;
    double top() const { return y + height; }
    double right() const { return x + width; }
};

inline constexpr Size compactSize{320, 188};
inline constexpr Size expandedSize{380, 500};
inline constexpr Size popoverSize{340, 440};

/// The new frame for a window of `frame` growing or shrinking to `newFrameSize` about its
/// horizontal centre with its bottom edge kept, then pulled inside `visible`: first the top,
/// then the bottom, then the right, then the left, so that the bottom and left limits win.
Rect resizeKeepingBottom(const Rect& frame, Size newFrameSize, const std::optional<Rect>& visible);

}  // namespace velmora
