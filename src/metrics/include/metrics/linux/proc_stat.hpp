#pragma once

#include <cstdint>
#include <optional>
#include <string_view>
#include <vector>

namespace velmora {

/// Busy and idle jiffies of one CPU line of /proc/stat. Busy is user + nice + system + irq +
/// softirq; idle is idle + iowait; steal and guest time count as neither.
struct CpuTimes {
    std::uint64_t busy = 0;
    std::uint64_t idle = 0;

    bool operator==(const CpuTimes&) const = default;
};

/// The machine line ("cpu ") and the per-CPU lines ("cpuN") of one /proc/stat text.
struct ProcStat {
    std::optional<CpuTimes> total;
    std::vector<CpuTimes> perCpu;
};

/// Parses into `out`, reusing its storage so that a sample does not allocate.
void parseProcStat(std::string_view text, ProcStat& out);

/// Busy share between two readings; nothing when no time passed or a counter went backwards.
std::optional<double> busyPercent(const CpuTimes& previous, const CpuTimes& current);

}  // namespace velmora
