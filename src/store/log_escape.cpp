#include "store/log_escape.hpp"

#include <array>
#include <cstddef>
#include <cstdint>

namespace velmora {

namespace {

constexpr std::array<char, 16> hexDigits = {'0', '1', '2', '3', '4', '5', '6', '7',
                                            '8', '9', 'a', 'b', 'c', 'd', 'e', 'f'};

void appendHexByte(std::string& out, unsigned char byte) {
    out += "\\x";
    out += hexDigits.at(byte >> 4U);
    out += hexDigits.at(byte & 0xFU);
}

void appendCodePoint(std::string& out, std::uint32_t code) {
    out += "\\u";
    for (int shift = 12; shift >= 0; shift -= 4)
        out += hexDigits.at((code >> shift) & 0xFU);
}

void appendAscii(std::string& out, unsigned char byte) {
    switch (byte) {
        case '\n':
            out += "\\n";
            return;
        case '\r':
            out += "\\r";
            return;
        case '\t':
            out += "\\t";
            return;
        default:
            break;
    }
    if (byte < 0x20 || byte == 0x7F) {
        appendHexByte(out, byte);
    } else {
        out += static_cast<char>(byte);
    }
}

struct SequenceStart {
    std::size_t length = 0;
    std::uint32_t bits = 0;     // the lead byte's share of the code point
    std::uint32_t minimum = 0;  // smaller code points in this length would be overlong
};

SequenceStart startOf(unsigned char lead) {
    if (lead >= 0xC2 && lead <= 0xDF) return {2, lead & 0x1FU, 0x80};
    if (lead >= 0xE0 && lead <= 0xEF) return {3, lead & 0x0FU, 0x800};
    if (lead >= 0xF0 && lead <= 0xF4) return {4, lead & 0x07U, 0x10000};
    return {};
}

// Length of the well-formed UTF-8 sequence at the front of `text` and its code point; 0 when
// the bytes there are not one (overlong, surrogate, past U+10FFFF, cut short).
std::size_t sequenceAt(std::string_view text, std::uint32_t& code) {
    const auto start = startOf(static_cast<unsigned char>(text[0]));
    if (start.length == 0 || text.size() < start.length) return 0;
    code = start.bits;
    for (std::size_t i = 1; i < start.length; ++i) {
        const auto next = static_cast<unsigned char>(text[i]);
        if ((next & 0xC0U) != 0x80U) return 0;
        code = (code << 6U) | (next & 0x3FU);
    }
    if (code < start.minimum || code > 0x10FFFF || (code >= 0xD800 && code <= 0xDFFF)) return 0;
    return start.length;
}

bool breaksTheLine(std::uint32_t code) {
    return (code >= 0x80 && code <= 0x9F) || code == 0x2028 || code == 0x2029;
}

}  // namespace

std::string escapeForLog(std::string_view text) {
    std::string out;
    out.reserve(text.size());
    while (!text.empty()) {
        const auto byte = static_cast<unsigned char>(text[0]);
        if (byte < 0x80) {
            appendAscii(out, byte);
            text.remove_prefix(1);
            continue;
        }
        std::uint32_t code = 0;
        const std::size_t length = sequenceAt(text, code);
        if (length == 0) {
            appendHexByte(out, byte);
            text.remove_prefix(1);
        } else {
            if (breaksTheLine(code)) {
                appendCodePoint(out, code);
            } else {
                out.append(text.substr(0, length));
            }
            text.remove_prefix(length);
        }
    }
    return out;
}

}  // namespace velmora
