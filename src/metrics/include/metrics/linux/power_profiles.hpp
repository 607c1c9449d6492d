#pragma once

#include <optional>
#include <string>

namespace velmora {

/// Where the active power profile comes from ("power-saver", "balanced", "performance").
class PowerProfileSource {
  public:
    virtual ~PowerProfileSource() = default;
    /// Nothing when no profile daemon answers.
    virtual std::optional<std::string> activeProfile() = 0;
};

}  // namespace velmora
