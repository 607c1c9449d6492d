#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>

namespace velmora {

/// The fields of one /proc/PID/stat line that say how much CPU a process used.
struct PidStat {
    int pid = 0;
    /// The command name as the kernel keeps it: any bytes, spaces, parentheses and line feeds
    /// included, not necessarily UTF-8.
    std::string name;
    char state = '?';
    int ppid = 0;
    std::uint64_t flags = 0;
    /// Clock ticks: the process's own user and system time.
    std::uint64_t utime = 0;
    std::uint64_t stime = 0;
    /// Clock ticks of children that ended and were waited for.
    std::uint64_t cutime = 0;
    std::uint64_t cstime = 0;
    /// Clock ticks after boot at which the process started; tells a reused pid apart.
    std::uint64_t starttime = 0;

    /// Its own time and that of its ended children.
    std::uint64_t totalTicks() const { return utime + stime + cutime + cstime; }
    /// A kernel thread (PF_KTHREAD), which runs no program of its own.
    bool kernelThread() const { return (flags & 0x00200000U) != 0 || pid == 2 || ppid == 2; }
    /// Ended but not yet waited for: its time already counts in its parent or soon will.
    bool ended() const { return state == 'Z' || state == 'X' || state == 'x'; }

    bool operator==(const PidStat&) const = default;
};

/// Parses one /proc/PID/stat text. The name lies between the first '(' and the LAST ')', since
/// a process may call itself "a) b (c". Nothing when a field is missing or not a number.
std::optional<PidStat> parsePidStat(std::string_view text);

}  // namespace velmora
