#pragma once

#include <string>
#include <string_view>

namespace velmora {

/// True when `bytes` is well-formed UTF-8 (no overlong forms, surrogates or values past
/// U+10FFFF).
bool isValidUtf8(std::string_view bytes);

/// The bytes as text when they are valid UTF-8, otherwise an empty text.
std::string utf8OrEmpty(std::string bytes);

}  // namespace velmora
