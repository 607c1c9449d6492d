#include "app/tray/popup_placement.hpp"

#include <algorithm>

namespace velmora {

ScreenPoint popupOrigin(const ScreenRect& workArea, ScreenPoint pointer, int width, int height) {
    const bool right = 2 * (pointer.x - workArea.x) >= workArea.width;
    const bool bottom = 2 * (pointer.y - workArea.y) >= workArea.height;
    const int left = workArea.x + popupMargin;
    const int top = workArea.y + popupMargin;
    const int x = right ? workArea.x + workArea.width - popupMargin - width : left;
    const int y = bottom ? workArea.y + workArea.height - popupMargin - height : top;
    return {std::max(x, workArea.x), std::max(y, workArea.y)};
}

}  // namespace velmora
