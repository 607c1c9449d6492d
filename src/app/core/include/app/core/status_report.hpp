#pragma once

#include <cstdint>
#include <optional>
#include <string>

namespace velmora {

/// A summary of the watchdog's state for a shell that shows it as text.
struct StatusReport {
    /// The engine's stage label ("NORMAL" … "EMERGENCY"), "n/a" without a reading.
    std::string stage = "n/a";
    /// The thermal state's word of the last live sample ("Nominal" … "Critical").
    std::string thermal = "n/a";
    std::optional<double> cpuTemp;
    std::optional<double> cpuBusy;
    /// The countdown machine's state name ("idle", "countdown", …).
    std::string state = "idle";
    /// Whole seconds left while a countdown runs.
    std::optional<std::int64_t> countdown;
    std::string mode = "home";
    bool simulation = false;

    bool operator==(const StatusReport&) const = default;
};

}  // namespace velmora
