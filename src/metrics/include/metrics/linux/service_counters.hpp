#pragma once

#include <chrono>
#include <cstddef>
#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <unordered_map>
#include <vector>

#include "metrics/heat_cause.hpp"
#include "os/unique_fd.hpp"
#include "policy/mono_time.hpp"

namespace velmora {

/// The `usage_usec` figure of a cgroup v2 cpu.stat text.
std::optional<std::uint64_t> parseCgroupUsage(std::string_view text);

/// The CPU time of the systemd units and application scopes under the system and user slices of
/// the cgroup v2 tree below `root`, kept in a small ring so that a window reaching back before
/// the machine got warm can still be measured. Short-lived workers count through their unit.
/// Each unit's cpu.stat is opened once and re-read with one `pread`; the unit list is renewed
/// now and then. No cgroup v2 tree: no units, and nothing else happens.
class ServiceCounters {
  public:
    static constexpr std::chrono::seconds readEvery{10};
    static constexpr std::chrono::seconds listEvery{60};
    /// Ten minutes of readings, and one more so that a full window has a reading at its start.
    static constexpr std::size_t depth = 61;
    /// Units past this many are not followed.
    static constexpr std::size_t mostUnits = 512;
    static constexpr std::size_t keptRows = 3;

    explicit ServiceCounters(std::string root);

    /// Reads every unit when `readEvery` has passed since the last reading, or at once when
    /// `readNow` is set (a scan wants figures of this moment; those stay out of the ring).
    void keep(MonoTime now, bool readNow = false);
    /// The busiest units from the reading closest before `windowStart` to the latest one,
    /// busiest first, at most `keptRows`, none below half a percent.
    std::vector<ServiceShare> shares(MonoTime windowStart) const;
    std::size_t unitCount() const { return units_.size(); }

  private:
    struct Unit {
        std::string name;
        UniqueFd stat;
    };
    struct Reading {
        MonoTime at;
        std::vector<std::optional<std::uint64_t>> usec;
    };

    void listUnits();
    Reading readAll(MonoTime now);
    void remember(Reading reading);
    void follow(const std::string& dir, std::string name);
    void listUserUnits(const std::string& dir, const std::string& prefix, int depthLeft);
    const Reading* readingAtOrBefore(MonoTime at) const;

    std::string cgroupDir_;
    std::vector<Unit> units_;
    std::unordered_map<std::string, std::size_t> byName_;
    std::vector<Reading> ring_;
    std::size_t ringNext_ = 0;
    std::optional<Reading> latest_;
    std::optional<MonoTime> lastRead_;
    std::optional<MonoTime> lastListed_;
};

}  // namespace velmora
