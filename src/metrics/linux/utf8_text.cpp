#include "metrics/linux/utf8_text.hpp"

namespace velmora {

namespace {

// Length of the valid UTF-8 sequence starting at `i`, or 0.
std::size_t sequenceLength(std::string_view text, std::size_t i) {
    const auto lead = static_cast<unsigned char>(text[i]);
    if (lead < 0x80) return 1;
    std::size_t length = 0;
    unsigned int minimum = 0;
    unsigned int value = 0;
    if ((lead & 0xE0U) == 0xC0U) {
        length = 2, minimum = 0x80, value = lead & 0x1FU;
    } else if ((lead & 0xF0U) == 0xE0U) {
        length = 3, minimum = 0x800, value = lead & 0x0FU;
    } else if ((lead & 0xF8U) == 0xF0U) {
        length = 4, minimum = 0x10000, value = lead & 0x07U;
    } else {
        return 0;
    }
    if (i + length > text.size()) return 0;
    for (std::size_t k = 1; k < length; ++k) {
        const auto next = static_cast<unsigned char>(text[i + k]);
        if ((next & 0xC0U) != 0x80U) return 0;
        value = (value << 6U) | (next & 0x3FU);
    }
    const bool surrogate = value >= 0xD800 && value <= 0xDFFF;
    if (value < minimum || value > 0x10FFFF || surrogate) return 0;
    return length;
}

}  // namespace

std::string validUtf8(std::string_view text) {
    std::string out;
    out.reserve(text.size());
    for (std::size_t i = 0; i < text.size();) {
        const std::size_t length = sequenceLength(text, i);
        if (length == 0) {
            out += "\xEF\xBF\xBD";
            ++i;
        } else {
            out.append(text.substr(i, length));
            i += length;
        }
    }
    return out;
}

}  // namespace velmora
