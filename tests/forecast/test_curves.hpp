#pragma once

#include <optional>
#include <string>
#include <vector>

#include "forecast/replay.hpp"

namespace velmora::testing {

/// A temperature series made for the forecast tests, with the truth behind its readings.
struct TestCurve {
    /// "rise over", "rise under", "fans" or "ramp".
    std::string kind;
    double limitC = 100.0;
    /// Rounded, noisy readings, one a second with a few missing.
    std::vector<ReplaySample> readings;
    /// The noise-free temperature at each reading.
    std::vector<double> truth;
    /// When the noise-free temperature first reaches the limit; nothing when it never does.
    std::optional<double> crossesAt;
    /// Forecasts count from here: the load step plus the forecaster's 20 s, since no forecast
    /// can foresee a step that has not happened yet.
    double judgedFrom = 0.0;
    /// For curves that never cross: false alarms count from one time constant after the last
    /// change (the step, or the fans' ramp).
    double quietFrom = 0.0;
};

/// `count` curves, a quarter of each kind, from a fixed seed: first-order rises from an idle
/// level to a level over and under the limit, with time constants from 20 to 400 s; rises
/// toward a level over the limit that fans, ramping up part way, turn to a level under it; and
/// slow straight ramps of 1 to 6 °C a minute. Each has Gaussian noise of 0.2 to 0.5 °C and is
/// read in whole degrees.
std::vector<TestCurve> makeTestCurves(unsigned seed, int count, double limitC = 100.0);

/// A first-order curve without noise: `idleC` until `stepAt`, then toward `levelC` with `tau`.
std::vector<ReplaySample> exactRise(double idleC, double levelC, double tau, double stepAt,
                                    double length);

}  // namespace velmora::testing
