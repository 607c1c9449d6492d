#pragma once

// An independent judge of well-formed UTF-8, written from the Unicode table of well-formed byte
// sequences (each lead byte with the exact range of its first continuation byte) rather than by
// decoding code points, so that it shares no logic with the checks it is held against.

#include <array>
#include <cstddef>
#include <optional>
#include <string_view>

namespace velmora::fuzz {

struct LeadRule {
    unsigned char leadLow;
    unsigned char leadHigh;
    unsigned char secondLow;
    unsigned char secondHigh;
    std::size_t continuations;
};

inline constexpr std::array<LeadRule, 8> kLeadRules{{
    {0xC2, 0xDF, 0x80, 0xBF, 1},
    {0xE0, 0xE0, 0xA0, 0xBF, 2},
    {0xE1, 0xEC, 0x80, 0xBF, 2},
    {0xED, 0xED, 0x80, 0x9F, 2},
    {0xEE, 0xEF, 0x80, 0xBF, 2},
    {0xF0, 0xF0, 0x90, 0xBF, 3},
    {0xF1, 0xF3, 0x80, 0xBF, 3},
    {0xF4, 0xF4, 0x80, 0x8F, 3},
}};

inline std::optional<LeadRule> ruleFor(unsigned char lead) {
    for (const LeadRule& rule : kLeadRules) {
        if (lead >= rule.leadLow && lead <= rule.leadHigh) return rule;
    }
    return std::nullopt;
}

inline bool inRange(char c, unsigned char low, unsigned char high) {
    const auto byte = static_cast<unsigned char>(c);
    return byte >= low && byte <= high;
}

inline bool wellFormedUtf8(std::string_view text) {
    std::size_t i = 0;
    while (i < text.size()) {
        const auto lead = static_cast<unsigned char>(text[i]);
        if (lead < 0x80) {
            ++i;
            continue;
        }
        const auto rule = ruleFor(lead);
        if (!rule || text.size() - i - 1 < rule->continuations) return false;
        if (!inRange(text[i + 1], rule->secondLow, rule->secondHigh)) return false;
        for (std::size_t k = 2; k <= rule->continuations; ++k) {
            if (!inRange(text[i + k], 0x80, 0xBF)) return false;
        }
        i += rule->continuations + 1;
    }
    return true;
}

}  // namespace velmora::fuzz
