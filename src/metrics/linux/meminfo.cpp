#include "metrics/linux/meminfo.hpp"

#include <algorithm>
#include <charconv>
#include <cmath>
#include <limits>

#include "metrics/linux/sysfs_file.hpp"

namespace velmora {

namespace {

// The kB figure of "Key:   1234 kB", or nothing when the key is missing.
std::optional<double> kilobytes(std::string_view text, std::string_view key) {
    std::size_t at = 0;
    while (at < text.size()) {
        const std::size_t lineEnd = std::min(text.find('\n', at), text.size());
        const std::string_view line = text.substr(at, lineEnd - at);
        if (line.starts_with(key) && line.size() > key.size() && line[key.size()] == ':') {
            const std::string_view rest = trimmed(line.substr(key.size() + 1));
            std::uint64_t value = 0;
            const auto [ptr, ec] = std::from_chars(rest.data(), rest.data() + rest.size(), value);
            if (ec != std::errc()) return std::nullopt;
            return static_cast<double>(value);
        }
        at = lineEnd + 1;
    }
    return std::nullopt;
}

std::optional<double> availableKilobytes(std::string_view text) {
    if (const auto available = kilobytes(text, "MemAvailable")) return available;
    const auto free = kilobytes(text, "MemFree");
    const auto buffers = kilobytes(text, "Buffers");
    const auto cached = kilobytes(text, "Cached");
    if (!free || !buffers || !cached) return std::nullopt;
    return *free + *buffers + *cached;
}

// The avg10 figure of the "some" or "full" line of a PSI report.
std::optional<double> avg10(std::string_view text, std::string_view kind) {
    const std::size_t line = text.find(std::string(kind) + " avg10=");
    if (line == std::string_view::npos || (line != 0 && text[line - 1] != '\n')) {
        return std::nullopt;
    }
    const std::string_view rest = text.substr(line + kind.size() + 7);
    double value = 0;
    const auto [ptr, ec] = std::from_chars(rest.data(), rest.data() + rest.size(), value);
    if (ec != std::errc()) return std::nullopt;
    return value;
}

}  // namespace

std::optional<MemoryInfo> parseMeminfo(std::string_view text) {
    constexpr double kKiBPerGiB = 1024.0 * 1024.0;
    const auto total = kilobytes(text, "MemTotal");
    const auto available = availableKilobytes(text);
    if (!total || !available || *total <= 0) return std::nullopt;
    const double used = std::clamp(*total - *available, 0.0, *total);
    return MemoryInfo{
        .usedPercent = used / *total * 100.0,
        .usedGB = used / kKiBPerGiB,
        .totalGB = *total / kKiBPerGiB,
        .pressure = std::nullopt,
    };
}

std::optional<std::string> memoryPressureFromPsi(std::string_view text) {
    const auto some = avg10(text, "some");
    const auto full = avg10(text, "full");
    if (!some && !full) return std::nullopt;
    if (full && *full >= 5.0) return "Critical";
    if (some && *some >= 10.0) return "Warning";
    return "Normal";
}

std::optional<double> parseLoadAverage(std::string_view text) {
    const std::string_view field = trimmed(text);
    double value = 0;
    const auto [ptr, ec] = std::from_chars(field.data(), field.data() + field.size(), value);
    // from_chars also reads "inf" and "nan", which no load average is.
    if (ec != std::errc() || !std::isfinite(value) || value < 0) return std::nullopt;
    return value;
}

std::optional<int> countCpuList(std::string_view text) {
    text = trimmed(text);
    if (text.empty()) return std::nullopt;
    int count = 0;
    while (!text.empty()) {
        const std::size_t comma = std::min(text.find(','), text.size());
        const std::string_view range = text.substr(0, comma);
        const std::size_t dash = range.find('-');
        const auto first = parseInteger(range.substr(0, dash));
        const auto last =
            dash == std::string_view::npos ? first : parseInteger(range.substr(dash + 1));
        if (!first || !last || *last < *first || *first < 0) return std::nullopt;
        // A list naming more CPUs than an int counts is not a real one (and would overflow).
        const long long width = *last - *first;
        if (width >= std::numeric_limits<int>::max() - count) return std::nullopt;
        count += static_cast<int>(width + 1);
        text.remove_prefix(std::min(comma + 1, text.size()));
    }
    return count;
}

}  // namespace velmora
