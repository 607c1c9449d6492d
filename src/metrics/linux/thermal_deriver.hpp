#pragma once

#include <optional>
#include <span>
#include <string>
#include <string_view>
#include <vector>

#include "metrics/linux/thermal_rules.hpp"
#include "policy/thermal_state.hpp"

namespace velmora {

/// One temperature source of the derived state and the rules its limits give.
struct ThermalSourceDef {
    /// Stable across rediscovery (the attribute's path), so held states survive it.
    std::string id;
    std::vector<ThermalCondition> conditions;
};

/// Derives the machine's thermal state from the kernel's own danger marks: the highest state of
/// any source, critical only after two samples in a row, falling only past each threshold's
/// hysteresis. With no usable source it is nominal.
class ThermalDeriver {
  public:
    /// Replaces the sources; a source whose id remains keeps what it held.
    void setSources(std::vector<ThermalSourceDef> sourceDefs);

    /// One sample: `readings[i]` is source i's temperature (nothing when it could not be read);
    /// `throttled` says whether the CPU throttle counters rose since the last sample or a
    /// device reports thermal throttling; `throttledBy` names which, for `drivingSource`.
    ThermalState update(std::span<const std::optional<double>> readings, bool throttled,
                        std::string_view throttledBy = "thermal_throttle");

    std::size_t sourceCount() const { return sources_.size(); }
    const ThermalSourceDef& sourceDef(std::size_t index) const { return sources_.at(index).def; }
    /// Sources whose reading counted in the last update.
    int usableSources() const { return usable_; }
    /// The source that set the last state ("" when nominal).
    const std::string& drivingSource() const { return driving_; }

  private:
    struct Source {
        ThermalSourceDef def;
        std::vector<bool> active;
    };

    static ThermalState levelOf(Source& source, double celsius);

    std::vector<Source> sources_;
    int criticalStreak_ = 0;
    int usable_ = 0;
    std::string driving_;
};

}  // namespace velmora
