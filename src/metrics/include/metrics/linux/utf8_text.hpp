#pragma once

#include <string>
#include <string_view>

namespace velmora {

/// The text with every byte that is not part of valid UTF-8 replaced by U+FFFD, so that a
/// driver's odd label cannot spoil the dashboard's JSON.
std::string validUtf8(std::string_view text);

}  // namespace velmora
