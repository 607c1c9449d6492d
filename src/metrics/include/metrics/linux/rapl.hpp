#pragma once

#include <optional>
#include <string>
#include <vector>

#include "metrics/linux/sysfs_file.hpp"
#include "metrics/system_records.hpp"
#include "policy/duration.hpp"
#include "policy/timestamp.hpp"

namespace velmora {

/// The package energy counters of the powercap RAPL interface (readable by root only on
/// current kernels), turned into watts between two samples.
class RaplMeter {
  public:
    struct Domain {
        std::string name;
        SysfsFile energy;
        /// Where the microjoule counter wraps.
        std::optional<long long> maxRange;
    };

    RaplMeter() = default;
    explicit RaplMeter(std::vector<Domain> domains) : domains_(std::move(domains)) {}

    static RaplMeter discover(const std::string& root);

    bool readable() const { return !domains_.empty(); }
    std::string sourceName() const;
    /// The first package's energy file, for diagnostics.
    std::string firstPath() const { return domains_.empty() ? "" : domains_.front().energy.path(); }

    /// Average package power since the previous call; nothing on the first call. Sets `failed`
    /// when a counter could not be read.
    std::optional<PowerReading> sample(Timestamp now, bool& failed);

  private:
    std::vector<Domain> domains_;
    std::vector<long long> lastEnergy_;
    std::vector<long long> scratch_;
    std::optional<Timestamp> lastAt_;
};

/// Watts from two microjoule readings `span` apart, allowing one wrap at `maxRange`.
std::optional<double> wattsBetween(long long previous, long long current,
                                   std::optional<long long> maxRange, Seconds span);

}  // namespace velmora
