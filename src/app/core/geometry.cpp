#include "app/core/geometry.hpp"

namespace velmora {

Rect resizeKeepingBottom(const Rect& frame, Size newFrameSize, const std::optional<Rect>& visible) {
    const double centreX = frame.x + frame.width / 2;
    Rect next{centreX - newFrameSize.width / 2, frame.y, newFrameSize.width, newFrameSize.height};
    if (!visible) return next;
    if (next.top() > visible->top()) next.y = visible->top() - next.height;
    if (next.y < visible->y) next.y = visible->y;
    if (next.right() > visible->right()) next.x = visible->right() - next.width;
    if (next.x < visible->x) next.x = visible->x;
    return next;
}

}  // namespace velmora
