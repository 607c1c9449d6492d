#include "metrics/linux/service_counters.hpp"

#include <fcntl.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <charconv>
#include <utility>

#include "metrics/linux/sysfs_dir.hpp"
#include "metrics/read_watch.hpp"

namespace velmora {

namespace {

constexpr std::size_t kReadCap = 1024;
constexpr double kSmallestPercent = 0.5;
// user@UID.service holds slices (app.slice, session.slice) that hold the scopes and services.
constexpr int kUserDepth = 3;

bool endsWith(std::string_view text, std::string_view end) {
    return text.size() >= end.size() && text.substr(text.size() - end.size()) == end;
}

bool isUnit(std::string_view name) {
    return endsWith(name, ".service") || endsWith(name, ".scope");
}

std::optional<std::uint64_t> readUsage(const UniqueFd& fd) {
    std::array<char, kReadCap> buffer{};
    const ssize_t got = ::pread(fd.get(), buffer.data(), buffer.size(), 0);
    if (got <= 0 || static_cast<std::size_t>(got) >= buffer.size()) return std::nullopt;
    return parseCgroupUsage(std::string_view(buffer.data(), static_cast<std::size_t>(got)));
}

}  // namespace

std::optional<std::uint64_t> parseCgroupUsage(std::string_view text) {
    constexpr std::string_view key = "usage_usec ";
    std::size_t at = 0;
    while (at < text.size()) {
        const std::size_t end = std::min(text.find('\n', at), text.size());
        const std::string_view line = text.substr(at, end - at);
        if (line.substr(0, key.size()) == key) {
            const std::string_view digits = line.substr(key.size());
            std::uint64_t value = 0;
            const auto [ptr, ec] =
                std::from_chars(digits.data(), digits.data() + digits.size(), value);
            if (ec != std::errc() || ptr != digits.data() + digits.size() || digits.empty()) {
                return std::nullopt;
            }
            return value;
        }
        at = end + 1;
    }
    return std::nullopt;
}

ServiceCounters::ServiceCounters(std::string root)
    : cgroupDir_(std::move(root) + "/sys/fs/cgroup") {}

void ServiceCounters::keep(MonoTime now, bool readNow) {
    const bool due = !lastRead_ || now - *lastRead_ >= readEvery;
    if (!due && !readNow) return;
    if (readQuarantined(cgroupDir_)) return;
    const ReadWatch::Scope watching(cgroupDir_);
    if (!lastListed_ || now - *lastListed_ >= listEvery) {
        listUnits();
        lastListed_ = now;
    }
    Reading reading = readAll(now);
    if (due) {
        lastRead_ = now;
        remember(reading);
    }
    latest_ = std::move(reading);
}

void ServiceCounters::listUnits() {
    const std::string system = childPath(cgroupDir_, "system.slice");
    for (const auto& name : listEntries(system, "")) {
        if (isUnit(name)) follow(childPath(system, name), name);
    }
    const std::string users = childPath(cgroupDir_, "user.slice");
    for (const auto& slice : listEntries(users, "user-")) {
        const std::string sliceDir = childPath(users, slice);
        for (const auto& name : listEntries(sliceDir, "")) {
            if (name.rfind("user@", 0) == 0 && endsWith(name, ".service")) {
                listUserUnits(childPath(sliceDir, name), name + "/", kUserDepth);
            } else if (isUnit(name)) {
                follow(childPath(sliceDir, name), childPath(slice, name));
            }
        }
    }
}

void ServiceCounters::listUserUnits(const std::string& dir, const std::string& prefix,
                                    int depthLeft) {
    if (depthLeft <= 0) return;
    for (const auto& name : listEntries(dir, "")) {
        if (isUnit(name)) {
            follow(childPath(dir, name), prefix + name);
        } else if (endsWith(name, ".slice")) {
            listUserUnits(childPath(dir, name), prefix, depthLeft - 1);
        }
    }
}

void ServiceCounters::follow(const std::string& dir, std::string name) {
    const auto found = byName_.find(name);
    if (found != byName_.end() && units_[found->second].stat.valid()) return;
    if (found == byName_.end() && units_.size() >= mostUnits) return;
    UniqueFd stat(::open(childPath(dir, "cpu.stat").c_str(), O_RDONLY | O_CLOEXEC));
    if (!stat.valid()) return;
    if (found != byName_.end()) {
        units_[found->second].stat = std::move(stat);
        return;
    }
    byName_.emplace(name, units_.size());
    units_.push_back(Unit{std::move(name), std::move(stat)});
}

ServiceCounters::Reading ServiceCounters::readAll(MonoTime now) {
    Reading reading{now, {}};
    reading.usec.reserve(units_.size());
    for (Unit& unit : units_) {
        std::optional<std::uint64_t> usage;
        if (unit.stat.valid()) usage = readUsage(unit.stat);
        // A unit that stopped keeps its name; the next listing opens its new cgroup, if any.
        if (!usage) unit.stat.reset();
        reading.usec.push_back(usage);
    }
    return reading;
}

void ServiceCounters::remember(Reading reading) {
    if (ring_.size() < depth) {
        ring_.push_back(std::move(reading));
        return;
    }
    ring_[ringNext_] = std::move(reading);
    ringNext_ = (ringNext_ + 1) % depth;
}

const ServiceCounters::Reading* ServiceCounters::readingAtOrBefore(MonoTime at) const {
    const Reading* best = nullptr;
    const Reading* oldest = nullptr;
    for (const Reading& reading : ring_) {
        if (!oldest || reading.at < oldest->at) oldest = &reading;
        if (reading.at <= at && (!best || reading.at > best->at)) best = &reading;
    }
    return best ? best : oldest;
}

std::vector<ServiceShare> ServiceCounters::shares(MonoTime windowStart) const {
    std::vector<ServiceShare> rows;
    const Reading* base = readingAtOrBefore(windowStart);
    if (!base || !latest_ || latest_->at <= base->at) return rows;
    const double over = (latest_->at - base->at).count();
    const std::size_t count = std::min(base->usec.size(), latest_->usec.size());
    for (std::size_t i = 0; i < count; ++i) {
        const auto& then = base->usec[i];
        const auto& later = latest_->usec[i];
        if (!then || !later || *later < *then) continue;
        const double percent = 100.0 * static_cast<double>(*later - *then) / 1.0e6 / over;
        if (percent >= kSmallestPercent) rows.push_back(ServiceShare{units_[i].name, percent});
    }
    std::sort(rows.begin(), rows.end(), [](const ServiceShare& a, const ServiceShare& b) {
        return a.percent != b.percent ? a.percent > b.percent : a.name < b.name;
    });
    if (rows.size() > keptRows) rows.resize(keptRows);
    return rows;
}

}  // namespace velmora
