#pragma once

#include <optional>

#include "app/core/menu_model.hpp"

namespace velmora {

/// Menu items carry their action as an integer tag, so that one target method serves every
/// item. Tags start at 1: AppKit's default tag 0 must never stand for an action.
long menuTag(MenuAction action);
/// The action of a tag; nothing for a tag no action has.
std::optional<MenuAction> menuActionOfTag(long tag);

}  // namespace velmora
