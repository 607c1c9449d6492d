#include "metrics/linux/process_scanner.hpp"

#include <dirent.h>
#include <fcntl.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <charconv>
#include <cstdio>
#include <utility>

#include "metrics/read_watch.hpp"
#include "os/unique_fd.hpp"

namespace velmora {

namespace {

// A stat line is a few hundred bytes; a longer one is not the kernel's and is skipped.
constexpr std::size_t kStatCap = 4096;
// Rows below this are rounding noise.
constexpr double kSmallestPercent = 0.5;

int openAtReadOnly(int dirFd, const char* path) {
    return ::openat(dirFd, path, O_RDONLY | O_CLOEXEC | O_NOFOLLOW);
}

// Reads what one read gives: proc files hand out a whole line in one go.
std::optional<std::string_view> readOnce(int fd, std::array<char, kStatCap>& buffer) {
    const ssize_t got = ::read(fd, buffer.data(), buffer.size());
    if (got <= 0 || static_cast<std::size_t>(got) >= buffer.size()) return std::nullopt;
    return std::string_view(buffer.data(), static_cast<std::size_t>(got));
}

bool allDigits(const char* name) {
    if (*name == '\0') return false;
    for (const char* c = name; *c != '\0'; ++c) {
        if (*c < '0' || *c > '9') return false;
    }
    return true;
}

double clockTicksPerSecond() {
    const long ticks = ::sysconf(_SC_CLK_TCK);
    return ticks > 0 ? static_cast<double>(ticks) : 100.0;
}

}  // namespace

ProcessScanner::ProcessScanner(std::string root, OpenAt openAt)
    : procDir_(std::move(root) + "/proc"),
      openAt_(openAt ? std::move(openAt) : OpenAt(openAtReadOnly)),
      ticksPerSecond_(clockTicksPerSecond()) {}

std::vector<ProcessShare> ProcessScanner::scan(MonoTime windowStart, MonoTime now) {
    readings_.clear();
    lastCount_ = 0;
    if (readQuarantined(procDir_)) return {};
    {
        const ReadWatch::Scope watching(procDir_);
        UniqueFd procFd(::open(procDir_.c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC));
        if (!procFd.valid()) return {};
        const auto uptime = readUptime(procFd.get());
        const int listing = ::dup(procFd.get());  // the stream owns it once made
        DIR* dir = listing >= 0 ? ::fdopendir(listing) : nullptr;
        if (dir == nullptr) {
            if (listing >= 0) ::close(listing);
            return {};
        }
        // readdir is safe here: the stream is this scan's own.
        const auto next = [dir] { return ::readdir(dir); };  // NOLINT(concurrency-mt-unsafe)
        for (const dirent* entry = next(); entry != nullptr; entry = next()) {
            if (!allDigits(entry->d_name)) continue;
            const auto stat = readOne(procFd.get(), entry->d_name);
            if (!stat) continue;
            recordFor(*stat, now, uptime);
            readings_.push_back(Reading{stat->pid, stat->totalTicks()});
        }
        ::closedir(dir);
    }
    lastCount_ = readings_.size();
    creditEndedChildren();
    return rank(windowStart, now);
}

// Gone, not ours to read (hidepid, EACCES), not a process, a kernel thread or a zombie: nothing,
// without a word.
std::optional<PidStat> ProcessScanner::readOne(int procFd, const char* pid) const {
    std::array<char, 32> path{};
    const auto written = std::snprintf(path.data(), path.size(), "%s/stat", pid);
    if (written <= 0 || static_cast<std::size_t>(written) >= path.size()) return std::nullopt;
    UniqueFd fd(openAt_(procFd, path.data()));
    if (!fd.valid()) return std::nullopt;
    std::array<char, kStatCap> buffer{};
    const auto text = readOnce(fd.get(), buffer);
    if (!text) return std::nullopt;
    auto stat = parsePidStat(*text);
    if (!stat || stat->kernelThread() || stat->ended()) return std::nullopt;
    return stat;
}

// A child that was read before and has ended now: what its rows counted up to its last reading
// is not counted again in its parent's.
void ProcessScanner::creditEndedChildren() {
    for (auto it = records_.begin(); it != records_.end();) {
        if (it->second.seen) {
            ++it;
            continue;
        }
        const auto parent = records_.find(it->second.ppid);
        if (parent != records_.end() && parent->second.seen) {
            parent->second.endedChildTicks += it->second.previousTicks;
        }
        it = records_.erase(it);
    }
}

std::vector<ProcessShare> ProcessScanner::rank(MonoTime windowStart, MonoTime now) {
    std::vector<ProcessShare> rows;
    for (const Reading& reading : readings_) {
        Record& record = records_.at(reading.pid);
        const double percent = percentOver(record, reading.ticks, windowStart, now);
        record.previousTicks = reading.ticks;
        record.previousAt = now;
        record.endedChildTicksBefore += record.endedChildTicks;
        record.endedChildTicks = 0;
        record.seen = false;
        if (percent >= kSmallestPercent)
            rows.push_back(ProcessShare{record.name, reading.pid, percent});
    }
    const auto kept = std::min(rows.size(), keptRows);
    std::partial_sort(rows.begin(), rows.begin() + static_cast<std::ptrdiff_t>(kept), rows.end(),
                      [](const ProcessShare& a, const ProcessShare& b) {
                          return a.percent != b.percent ? a.percent > b.percent : a.pid < b.pid;
                      });
    rows.resize(kept);
    return rows;
}

ProcessScanner::Record& ProcessScanner::recordFor(const PidStat& stat, MonoTime now,
                                                  std::optional<double> uptime) {
    auto [found, fresh] = records_.try_emplace(stat.pid);
    Record& record = found->second;
    const std::uint64_t ticks = stat.totalTicks();
    // A different start time is another process under a reused pid; counters that went
    // backwards cannot be the same process either.
    if (fresh || record.startTicks != stat.starttime || ticks < record.previousTicks) {
        record = Record{};
        record.startTicks = stat.starttime;
        record.firstTicks = ticks;
        record.firstOwnTicks = stat.utime + stat.stime;
        record.firstAt = now;
        if (uptime) {
            record.firstAge =
                std::max(0.0, *uptime - static_cast<double>(stat.starttime) / ticksPerSecond_);
        }
        record.previousTicks = ticks;
        record.previousAt = now;
    }
    record.name = stat.name;
    record.ppid = stat.ppid;
    record.seen = true;
    return record;
}

// CPU seconds in the window over its length. Where the window starts before this process was
// first read, its own average over its life stands in for the part not measured; the time of
// children that ended before then is left out, since it may come from long before the window.
double ProcessScanner::percentOver(const Record& record, std::uint64_t ticks, MonoTime windowStart,
                                   MonoTime now) const {
    const auto seconds = [this](std::uint64_t from, std::uint64_t to) {
        return to >= from ? static_cast<double>(to - from) / ticksPerSecond_ : 0.0;
    };
    const auto rate = [](double used, Seconds over) {
        return over.count() > 0 ? 100.0 * used / over.count() : 0.0;
    };
    const std::uint64_t sincePrevious = record.previousTicks + record.endedChildTicks;
    const std::uint64_t sinceFirst =
        record.firstTicks + record.endedChildTicksBefore + record.endedChildTicks;
    if (record.previousAt < now && windowStart >= record.previousAt) {
        return rate(seconds(sincePrevious, ticks), now - record.previousAt);
    }
    if (record.firstAt < now && windowStart >= record.firstAt) {
        return rate(seconds(sinceFirst, ticks), now - record.firstAt);
    }
    const double before = static_cast<double>(record.firstOwnTicks) / ticksPerSecond_;
    const double unmeasured = (record.firstAt - windowStart).count();
    double estimate = 0.0;
    if (record.firstAge) {
        estimate = *record.firstAge <= unmeasured ? before : before * unmeasured / *record.firstAge;
    }
    return rate(seconds(sinceFirst, ticks) + estimate, now - windowStart);
}

std::optional<double> ProcessScanner::readUptime(int procFd) const {
    UniqueFd fd(::openat(procFd, "uptime", O_RDONLY | O_CLOEXEC));
    if (!fd.valid()) return std::nullopt;
    std::array<char, kStatCap> buffer{};
    const auto text = readOnce(fd.get(), buffer);
    if (!text) return std::nullopt;
    double seconds = 0.0;
    const auto [end, ec] = std::from_chars(text->data(), text->data() + text->size(), seconds);
    if (ec != std::errc() || end == text->data() || seconds < 0) return std::nullopt;
    return seconds;
}

std::optional<std::string> ProcessScanner::nameOf(int pid) const {
    const auto found = records_.find(pid);
    if (found == records_.end()) return std::nullopt;
    return found->second.name;
}

}  // namespace velmora
