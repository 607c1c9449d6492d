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
///
/// One failed read must not end an emergency: a source that reads nothing plausible keeps its
/// last plausible value and the states it held, marked stale, for `holdSamples` samples (three
/// seconds at one sample a second) before it counts as gone. A reading above the plausible range
/// straight after held states keeps them for as long as it stays there: a sensor that was at its
/// emergency limit and now reads off the scale is not cooling down.
class ThermalDeriver {
  public:
    static constexpr int holdSamples = 3;

    /// Replaces the sources; a source whose id remains keeps what it held. A source that is no
    /// longer among them is held, stale, like a failed read, before it is dropped.
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
    /// Sources that are held on their last plausible value after failed reads.
    int staleSources() const { return stale_; }
    /// The ids of the sources held in the last update.
    const std::vector<std::string>& staleIds() const { return staleIds_; }
    /// Takes `previous` as the state of the sample before this deriver's first one: a critical
    /// state already confirmed elsewhere needs one more critical sample, not two.
    void assumePrevious(ThermalState previous) {
        if (previous == ThermalState::critical) criticalStreak_ = 1;
    }
    /// A source's last plausible temperature (held ones included); nothing when unknown.
    std::optional<double> lastPlausible(const std::string& id) const;

  private:
    struct Source {
        ThermalSourceDef def;
        std::vector<bool> active;
        std::optional<double> lastPlausible;
        int missed = 0;
    };

    static ThermalState levelOf(Source& source, double celsius);
    static ThermalState heldLevel(const Source& source);
    /// The state of a source that read nothing plausible this sample; nothing once it is gone.
    std::optional<ThermalState> hold(Source& source, std::optional<double> reading);

    std::vector<Source> sources_;
    int criticalStreak_ = 0;
    int usable_ = 0;
    int stale_ = 0;
    std::vector<std::string> staleIds_;
    std::string driving_;
};

}  // namespace velmora
