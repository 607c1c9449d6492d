// sysfs' list of online CPUs ("0-3,5,7-8"). A count is at least one CPU and agrees with a plain
// reading of the list's ranges.

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <optional>
#include <string>

#include "fuzz_support.hpp"
#include "metrics/linux/meminfo.hpp"
#include "metrics/linux/sysfs_file.hpp"

namespace {

// Sums the ranges with overflow checks; nothing for text that is not a list of ranges of
// non-negative numbers, or whose sum does not fit a long long.
std::optional<long long> plainCount(std::string_view text) {
    constexpr std::string_view blanks = " \t\r\n";
    const auto first = text.find_first_not_of(blanks);
    if (first == std::string_view::npos) return std::nullopt;
    text = text.substr(first, text.find_last_not_of(blanks) - first + 1);
    long long total = 0;
    for (std::size_t at = 0; at < text.size();) {
        const std::size_t end = std::min(text.find(',', at), text.size());
        const std::string_view range = text.substr(at, end - at);
        const auto dash = range.find('-');
        const auto low = velmora::parseInteger(range.substr(0, dash));
        const auto high =
            dash == std::string_view::npos ? low : velmora::parseInteger(range.substr(dash + 1));
        if (!low || !high || *low < 0 || *high < *low) return std::nullopt;
        long long width = 0;
        if (__builtin_sub_overflow(*high, *low, &width) ||
            __builtin_add_overflow(width, 1, &width) ||
            __builtin_add_overflow(total, width, &total)) {
            return std::nullopt;
        }
        at = end + 1;
    }
    return total;
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    using velmora::fuzz::require;
    const std::string_view text = velmora::fuzz::asText(data, size);
    const auto count = velmora::countCpuList(text);
    if (!count) return 0;
    require(*count >= 1, "a list of online CPUs names at least one");
    const auto expected = plainCount(text);
    require(expected.has_value() && *expected == *count, "the count is the sum of the ranges");
    return 0;
}
