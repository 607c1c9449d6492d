#pragma once

#include <optional>

#include "policy/level.hpp"
#include "policy/mono_time.hpp"

namespace velmora {

/// Turns one reading a tick into the stage level: the ladder plus a sustained `hot` treated
/// as `extreme` and, when enabled, a sustained `extreme` promoted to `blowout`.
class Alerter {
  public:
    explicit Alerter(bool promoteSustainedExtreme) : promote_(promoteSustainedExtreme) {}

    std::optional<Level> update(std::optional<double> tempC, MonoTime now);

    /// Since when the reading has been hot or hotter, without a break; nothing when it is not.
    std::optional<MonoTime> hotSince() const { return hotSince_; }
    /// Since when it has been extreme; nothing when it is not.
    std::optional<MonoTime> extremeSince() const { return extremeSince_; }
    bool promotesSustainedExtreme() const { return promote_; }

  private:
    Level extremeOrPromoted(MonoTime now);

    std::optional<MonoTime> hotSince_;
    std::optional<MonoTime> extremeSince_;
    bool promote_;
};

}  // namespace velmora
