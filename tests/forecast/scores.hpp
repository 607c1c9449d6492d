#pragma once

#include <functional>
#include <optional>
#include <string>
#include <vector>

#include "forecast/test_curves.hpp"

namespace velmora::testing {

/// How a forecaster did over a set of curves. Rates are shares of the forecasts judged, one per
/// reading.
struct ForecastScores {
    /// Readings with a crossing 30 to 300 s ahead.
    int crossingAhead = 0;
    /// ... forecast as none or more than 600 s.
    int misses = 0;
    /// ... forecast more than 25 % + 5 s later than the truth (misses not counted again).
    int late = 0;
    /// Readings of curves that never cross, one time constant after the last change.
    int quiet = 0;
    /// ... with a forecast of the limit within 5 minutes.
    int falseCritical = 0;
    /// Curves that never cross, and those that had any such false alarm.
    int quietCurves = 0;
    int quietCurvesAlarmed = 0;
    /// |forecast − truth| / truth over the crossings 30 to 300 s ahead that were forecast.
    std::vector<double> relativeErrors;

    double missRate() const;
    double lateRate() const;
    double falseCriticalRate() const;
    double medianRelativeError() const;
    /// One line of the figures, for the test's output.
    std::string summary(const std::string& name) const;
};

using EtaReplay = std::function<std::vector<std::optional<double>>(const TestCurve&)>;

ForecastScores scoreForecasts(const std::vector<TestCurve>& curves, const EtaReplay& replay);

/// The plain straight line a monitoring system would draw: least squares over the last 240 s
/// of readings, extended to the limit when it rises; nothing otherwise.
std::vector<std::optional<double>> plainLineEtas(const std::vector<ReplaySample>& samples,
                                                 double limitC);

}  // namespace velmora::testing
