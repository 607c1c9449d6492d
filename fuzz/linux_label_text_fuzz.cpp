// A driver's label or a zone's type as read from sysfs ("Package id 0", "acpitz"): any bytes. It
// ends up in the dashboard's JSON, so what comes out is valid UTF-8 in every case, the input
// itself when it already was, and otherwise each bad byte becomes one U+FFFD.

#include <cstddef>
#include <cstdint>
#include <string>

#include "fuzz_support.hpp"
#include "metrics/linux/utf8_text.hpp"
#include "utf8_reference.hpp"

namespace {

constexpr std::string_view kReplacement = "\xEF\xBF\xBD";

// Removes every replacement character, for comparing texts regardless of the substitutions.
std::string withoutReplacements(std::string_view text) {
    std::string kept;
    for (std::size_t at = 0; at < text.size();) {
        if (text.substr(at).starts_with(kReplacement)) {
            at += kReplacement.size();
        } else {
            kept.push_back(text[at++]);
        }
    }
    return kept;
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    using velmora::fuzz::require;
    const std::string_view text = velmora::fuzz::asText(data, size);
    const std::string shown = velmora::validUtf8(text);
    require(velmora::fuzz::wellFormedUtf8(shown), "a label is always valid UTF-8");
    if (velmora::fuzz::wellFormedUtf8(text)) {
        require(shown == text, "a valid label is kept as it is");
        return 0;
    }
    require(shown.size() <= text.size() * kReplacement.size(), "one replacement per bad byte");
    // Every byte kept is one of the input's, in order: only bad bytes were replaced.
    const std::string kept = withoutReplacements(shown);
    std::size_t at = 0;
    for (const char c : kept) {
        at = text.find(c, at);
        require(at != std::string_view::npos, "good bytes are kept in their order");
        ++at;
    }
    return 0;
}
