// The text of a numeric kernel attribute ("42000\n"): temperatures, fan speeds, battery figures,
// energy counters and trip points all go through this one parser. A value is exactly the decimal
// integer the trimmed text spells; anything else is nothing.

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <optional>
#include <string>

#include "fuzz_support.hpp"
#include "metrics/linux/sysfs_file.hpp"

namespace {

using velmora::fuzz::require;

bool isBlank(char c) {
    return c == ' ' || c == '\t' || c == '\r' || c == '\n';
}

// "-0042" → "-42", "-0" → "0"; nothing unless the text is an optional minus and digits.
std::optional<std::string> canonicalInteger(std::string_view text) {
    const bool negative = text.starts_with('-');
    std::string_view digits = text.substr(negative ? 1 : 0);
    if (digits.empty() || digits.find_first_not_of("0123456789") != std::string_view::npos) {
        return std::nullopt;
    }
    digits.remove_prefix(std::min(digits.find_first_not_of('0'), digits.size() - 1));
    return (negative && digits != "0" ? "-" : "") + std::string(digits);
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    const std::string_view text = velmora::fuzz::asText(data, size);
    const std::string_view core = velmora::trimmed(text);
    require(text.find(core) != std::string_view::npos, "trimming only removes");
    require(core.empty() || (!isBlank(core.front()) && !isBlank(core.back())),
            "trimmed text has no blank at either end");

    const auto value = velmora::parseInteger(text);
    const auto canonical = canonicalInteger(core);
    if (value) {
        require(canonical == std::to_string(*value), "a value is the integer the text spells");
    } else if (canonical) {
        // Only a number too large for a long long (over 18 digits) may be refused.
        const std::size_t digits = canonical->size() - (canonical->starts_with('-') ? 1 : 0);
        require(digits > 18, "a well-formed integer that fits is read");
    }
    return 0;
}
