#include "metrics/linux/pid_stat.hpp"

#include <array>
#include <charconv>
#include <cstddef>

namespace velmora {

namespace {

// 1-based field numbers as proc(5) gives them, counted from the state (field 3).
constexpr std::size_t kState = 3;
constexpr std::size_t kPpid = 4;
constexpr std::size_t kFlags = 9;
constexpr std::size_t kUtime = 14;
constexpr std::size_t kStime = 15;
constexpr std::size_t kCutime = 16;
constexpr std::size_t kCstime = 17;
constexpr std::size_t kStarttime = 22;

template <typename Number>
std::optional<Number> number(std::string_view text) {
    Number value{};
    const auto* end = text.data() + text.size();
    const auto [ptr, ec] = std::from_chars(text.data(), end, value);
    if (ec != std::errc() || ptr != end) return std::nullopt;
    return value;
}

// The fields after the name, split on single spaces: fields[n] is field n.
std::optional<std::array<std::string_view, kStarttime + 1>> fieldsAfterName(std::string_view rest) {
    std::array<std::string_view, kStarttime + 1> fields{};
    std::size_t at = 0;
    for (std::size_t field = kState; field <= kStarttime; ++field) {
        if (at >= rest.size()) return std::nullopt;
        const std::size_t end = std::min(rest.find_first_of(" \n", at), rest.size());
        fields[field] = rest.substr(at, end - at);
        at = end + 1;
    }
    return fields;
}

// Children's times are signed in the kernel's format; a negative one is not a real count.
std::optional<std::uint64_t> childTicks(std::string_view text) {
    const auto value = number<long long>(text);
    if (!value || *value < 0) return std::nullopt;
    return static_cast<std::uint64_t>(*value);
}

}  // namespace

std::optional<PidStat> parsePidStat(std::string_view text) {
    const std::size_t open = text.find('(');
    const std::size_t close = text.rfind(')');
    if (open == std::string_view::npos || close == std::string_view::npos || close < open) {
        return std::nullopt;
    }
    const std::string_view pidText = text.substr(0, open);
    if (pidText.size() < 2 || pidText.back() != ' ') return std::nullopt;
    const auto pid = number<int>(pidText.substr(0, pidText.size() - 1));
    if (!pid || *pid <= 0) return std::nullopt;
    if (close + 2 > text.size() || text[close + 1] != ' ') return std::nullopt;
    const auto fields = fieldsAfterName(text.substr(close + 2));
    if (!fields) return std::nullopt;
    const auto& f = *fields;
    if (f[kState].size() != 1) return std::nullopt;
    PidStat stat;
    stat.pid = *pid;
    stat.name = std::string(text.substr(open + 1, close - open - 1));
    stat.state = f[kState].front();
    const auto ppid = number<int>(f[kPpid]);
    const auto flags = number<std::uint64_t>(f[kFlags]);
    const auto utime = number<std::uint64_t>(f[kUtime]);
    const auto stime = number<std::uint64_t>(f[kStime]);
    const auto cutime = childTicks(f[kCutime]);
    const auto cstime = childTicks(f[kCstime]);
    const auto start = number<std::uint64_t>(f[kStarttime]);
    if (!ppid || !flags || !utime || !stime || !cutime || !cstime || !start) return std::nullopt;
    stat.ppid = *ppid;
    stat.flags = *flags;
    stat.utime = *utime;
    stat.stime = *stime;
    stat.cutime = *cutime;
    stat.cstime = *cstime;
    stat.starttime = *start;
    return stat;
}

}  // namespace velmora
