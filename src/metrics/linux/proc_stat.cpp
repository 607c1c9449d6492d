#include "metrics/linux/proc_stat.hpp"

#include <algorithm>
#include <array>
#include <charconv>

namespace velmora {

namespace {

// Fields after the name: user nice system idle iowait irq softirq steal guest guest_nice.
std::optional<CpuTimes> parseCpuFields(std::string_view fields) {
    std::array<std::uint64_t, 7> values{};
    std::size_t count = 0;
    const char* p = fields.data();
    const char* end = fields.data() + fields.size();
    while (count < values.size()) {
        while (p < end && *p == ' ')
            ++p;
        const auto [next, ec] = std::from_chars(p, end, values.at(count));
        if (ec != std::errc()) break;
        p = next;
        ++count;
    }
    // Kernels before 2.6 print only four fields; the missing ones count as 0.
    if (count < 4) return std::nullopt;
    const auto [user, nice, system, idle, iowait, irq, softirq] = values;
    return CpuTimes{user + nice + system + irq + softirq, idle + iowait};
}

}  // namespace

void parseProcStat(std::string_view text, ProcStat& out) {
    out.total.reset();
    out.perCpu.clear();
    while (!text.empty() && text.starts_with("cpu")) {
        const std::size_t lineEnd = std::min(text.find('\n'), text.size());
        const std::string_view line = text.substr(0, lineEnd);
        const std::size_t blank = line.find(' ');
        if (blank != std::string_view::npos) {
            const auto times = parseCpuFields(line.substr(blank));
            if (blank == 3) {
                out.total = times;
            } else if (times) {
                out.perCpu.push_back(*times);
            }
        }
        text.remove_prefix(std::min(lineEnd + 1, text.size()));
    }
}

std::optional<double> busyPercent(const CpuTimes& previous, const CpuTimes& current) {
    if (current.busy < previous.busy || current.idle < previous.idle) return std::nullopt;
    const std::uint64_t busy = current.busy - previous.busy;
    const std::uint64_t total = busy + (current.idle - previous.idle);
    if (total == 0) return std::nullopt;
    return std::clamp(static_cast<double>(busy) / static_cast<double>(total) * 100.0, 0.0, 100.0);
}

}  // namespace velmora
