#pragma once

#include <cstdint>
#include <functional>
#include <optional>
#include <string>
#include <unordered_map>
#include <vector>

#include "metrics/heat_cause.hpp"
#include "metrics/linux/pid_stat.hpp"
#include "policy/mono_time.hpp"

namespace velmora {

/// Ranks the processes below `root`/proc by the CPU time they used in a window. Each scan opens
/// every /proc/PID/stat once; nothing is opened between scans. A pid is known by its start
/// time as well, so that a new process given an old pid never inherits the old one's time.
class ProcessScanner {
  public:
    /// How a stat file is opened, relative to the open proc directory (`openat`'s shape), so
    /// that a test can count or refuse opens.
    using OpenAt = std::function<int(int dirFd, const char* path)>;

    static constexpr std::size_t keptRows = 5;

    explicit ProcessScanner(std::string root, OpenAt openAt = {});

    /// One scan: the busiest processes over [windowStart, now], busiest first, at most
    /// `keptRows`, none below half a percent.
    std::vector<ProcessShare> scan(MonoTime windowStart, MonoTime now);
    /// Drops what earlier scans learned.
    void forget() { records_.clear(); }
    /// The name seen for a pid in the latest scan.
    std::optional<std::string> nameOf(int pid) const;
    /// How many processes the latest scan read.
    std::size_t lastCount() const { return lastCount_; }

  private:
    struct Record {
        std::uint64_t startTicks = 0;
        int ppid = 0;
        std::string name;
        // The counters at first sight, with the process's age then (seconds; none when the
        // uptime could not be read), and at the previous scan.
        std::uint64_t firstTicks = 0;
        /// Its own share of `firstTicks`, without children that ended before it was read.
        std::uint64_t firstOwnTicks = 0;
        MonoTime firstAt;
        std::optional<double> firstAge;
        std::uint64_t previousTicks = 0;
        MonoTime previousAt;
        /// Ticks of children that ended since the previous scan, since first sight before
        /// that, which their own rows already counted up to their last reading: the parent's
        /// children's time grows by a child's whole life when it ends.
        std::uint64_t endedChildTicks = 0;
        std::uint64_t endedChildTicksBefore = 0;
        bool seen = false;
    };
    struct Reading {
        int pid = 0;
        std::uint64_t ticks = 0;
    };

    std::optional<PidStat> readOne(int procFd, const char* pid) const;
    Record& recordFor(const PidStat& stat, MonoTime now, std::optional<double> uptime);
    double percentOver(const Record& record, std::uint64_t ticks, MonoTime windowStart,
                       MonoTime now) const;
    std::optional<double> readUptime(int procFd) const;
    void creditEndedChildren();
    std::vector<ProcessShare> rank(MonoTime windowStart, MonoTime now);

    std::string procDir_;
    OpenAt openAt_;
    double ticksPerSecond_;
    std::unordered_map<int, Record> records_;
    std::vector<Reading> readings_;
    std::size_t lastCount_ = 0;
};

}  // namespace velmora
