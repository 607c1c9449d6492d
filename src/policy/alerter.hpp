#pragma once

#include <optional>

#include "policy/level.hpp"
#include "policy/timestamp.hpp"

namespace velmora {

/// Turns one reading a tick into the stage level: the ladder plus a sustained `hot` treated
/// as `extreme` and, when enabled, a sustained `extreme` promoted to `blowout`.
class Alerter {
  public:
    explicit Alerter(bool timedStageB) : timedStageB(timedStageB) {}

    std::optional<Level> update(std::optional<double> tempC, Timestamp now);

    std::optional<Timestamp> hotSince;
    std::optional<Timestamp> extSince;
    const bool timedStageB;

  private:
    Level stageA(Timestamp now);
};

}  // namespace velmora
