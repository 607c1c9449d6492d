#include "store/log_escape.hpp"

#include "os/utf8.hpp"

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
        const auto sequence = utf8SequenceAt(text);
        if (!sequence) {
            appendHexByte(out, byte);
            text.remove_prefix(1);
        } else {
            if (breaksTheLine(sequence->codePoint)) {
                appendCodePoint(out, sequence->codePoint);
            } else {
                out.append(text.substr(0, sequence->length));
            }
            text.remove_prefix(sequence->length);
        }
    }
    return out;
}

}  // namespace velmora
