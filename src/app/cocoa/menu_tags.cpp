#include "app/cocoa/menu_tags.hpp"

namespace velmora {

namespace {

constexpr long firstTag = 1;
constexpr long lastAction = static_cast<long>(MenuAction::appearanceDark);

}  // namespace

long menuTag(MenuAction action) {
    return firstTag + static_cast<long>(action);
}

std::optional<MenuAction> menuActionOfTag(long tag) {
    const long index = tag - firstTag;
    if (index < 0 || index > lastAction) return std::nullopt;
    return static_cast<MenuAction>(index);
}

}  // namespace velmora
