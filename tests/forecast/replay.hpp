#pragma once

#include <iosfwd>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "policy/forecaster.hpp"

namespace velmora::testing {

/// One reading of a replayed series.
struct ReplaySample {
    double t = 0.0;
    double celsius = 0.0;
};

/// The series read from "t,celsius" lines, or what was wrong with it.
struct ReplayInput {
    std::vector<ReplaySample> samples;
    std::optional<std::string> problem;
};

/// Reads "t,celsius" lines (seconds and degrees, blank lines and a trailing carriage return
/// allowed). A line that is not two finite numbers, time going backwards or an input without a
/// single reading is a problem naming the line.
ReplayInput readReplayInput(std::istream& in);

/// The forecast ETA in seconds after each sample (nothing where there is none), through the
/// same `Forecaster` the watchdog runs.
std::vector<std::optional<double>> replayEtas(const std::vector<ReplaySample>& samples,
                                              double limitC);

/// "t,eta" per sample, eta in whole seconds or "none".
void writeReplay(std::ostream& out, const std::vector<ReplaySample>& samples,
                 const std::vector<std::optional<double>>& etas);

}  // namespace velmora::testing
