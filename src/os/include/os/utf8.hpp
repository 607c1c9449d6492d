#pragma once

#include <cstddef>
#include <cstdint>
#include <optional>
#include <string>
#include <string_view>

namespace velmora {

/// One well-formed UTF-8 sequence: how many bytes it takes and the code point it encodes.
struct Utf8Sequence {
    std::size_t length = 0;
    std::uint32_t codePoint = 0;
};

/// The well-formed sequence at the front of `bytes`; nothing when the bytes there are not one
/// (empty, a stray continuation byte, cut short, overlong, a surrogate or past U+10FFFF).
std::optional<Utf8Sequence> utf8SequenceAt(std::string_view bytes);

/// True when `bytes` is well-formed UTF-8 (no overlong forms, surrogates or values past
/// U+10FFFF).
bool isValidUtf8(std::string_view bytes);

/// The bytes as text when they are valid UTF-8, otherwise an empty text.
std::string utf8OrEmpty(std::string bytes);

}  // namespace velmora
