#include "os/utf8.hpp"

namespace velmora {
namespace {

struct Lead {
    std::size_t continuationBytes;
    std::uint32_t value;
};

// How many continuation bytes a lead byte announces, and its payload bits; nothing for a byte
// that cannot start a sequence.
std::optional<Lead> decodeLead(unsigned char byte) {
    if (byte < 0x80) return Lead{0, byte};
    if (byte >= 0xC2 && byte <= 0xDF) return Lead{1, byte & 0x1Fu};
    if (byte >= 0xE0 && byte <= 0xEF) return Lead{2, byte & 0x0Fu};
    if (byte >= 0xF0 && byte <= 0xF4) return Lead{3, byte & 0x07u};
    return std::nullopt;
}

bool isShortestForm(std::uint32_t value, std::size_t continuationBytes) {
    constexpr std::uint32_t smallest[] = {0, 0x80, 0x800, 0x10000};
    return value >= smallest[continuationBytes];
}

}  // namespace

std::optional<Utf8Sequence> utf8SequenceAt(std::string_view bytes) {
    if (bytes.empty()) return std::nullopt;
    const std::optional<Lead> lead = decodeLead(static_cast<unsigned char>(bytes[0]));
    if (!lead || bytes.size() - 1 < lead->continuationBytes) return std::nullopt;
    std::uint32_t value = lead->value;
    for (std::size_t k = 1; k <= lead->continuationBytes; ++k) {
        const auto next = static_cast<unsigned char>(bytes[k]);
        if ((next & 0xC0u) != 0x80u) return std::nullopt;
        value = (value << 6u) | (next & 0x3Fu);
    }
    if (!isShortestForm(value, lead->continuationBytes)) return std::nullopt;
    if ((value >= 0xD800 && value <= 0xDFFF) || value > 0x10FFFF) return std::nullopt;
    return Utf8Sequence{lead->continuationBytes + 1, value};
}

bool isValidUtf8(std::string_view bytes) {
    while (!bytes.empty()) {
        const std::optional<Utf8Sequence> sequence = utf8SequenceAt(bytes);
        if (!sequence) return false;
        bytes.remove_prefix(sequence->length);
    }
    return true;
}

std::string utf8OrEmpty(std::string bytes) {
    if (!isValidUtf8(bytes)) return {};
    return bytes;
}

}  // namespace velmora
