#pragma once

#include <optional>

#include "policy/level.hpp"
#include "policy/mono_time.hpp"

namespace velmora {

/// Turns one reading a tick into the stage level: the ladder plus a sustained `hot` treated
/// as `extreme` and, when enabled, a sustained `extreme` promoted to `blowout`.
class Alerter {
  public:
    explicit Alerter(bool promoteSustainedExtreme)
        : promoteSustainedExtreme(promoteSustainedExtreme) {}

    std::optional<Level> update(std::optional<double> tempC, MonoTime now);

    std::optional<MonoTime> hotSince;
    std::optional<MonoTime> extremeSince;
    const bool promoteSustainedExtreme;

  private:
    Level extremeOrPromoted(MonoTime now);
};

}  // namespace velmora
