#pragma once

#include <string>
#include <string_view>

#include "actuators/automation_outcome.hpp"
#include "policy/duration.hpp"

namespace velmora {

/// Where the Mac keeps its scripting tool.
inline constexpr std::string_view osascriptPath = "/usr/bin/osascript";

/// Runs one AppleScript through the scripting tool and classifies how it went.
class ScriptRunner {
  public:
    /// `executable` is the tool to start; tests point it at stand-ins.
    explicit ScriptRunner(std::string executable = std::string(osascriptPath));

    /// Runs `executable -e script` and blocks for at most `timeout` plus the reading of
    /// its output. Never call it on the main thread.
    [[nodiscard]] AutomationOutcome run(std::string_view script, Seconds timeout) const;

    [[nodiscard]] const std::string& executable() const { return executable_; }

  private:
    std::string executable_;
};

}  // namespace velmora
