#pragma once

#include <deque>
#include <optional>
#include <vector>

#include "policy/curve_fit.hpp"
#include "policy/duration.hpp"
#include "policy/forecast.hpp"
#include "policy/mono_time.hpp"

namespace velmora {

/// Estimates when a temperature reaches its critical limit, from its own recent past.
///
/// Readings are averaged over 3-s bins and fitted over the last 240 s at most. Two models are
/// fitted: a straight line and a first-order approach T(t) = T∞ − D·e^(−t/τ), the way a
/// temperature settles after a change of load. The exponential is used only when an F-test
/// says its extra parameter explains clearly more than the line does and the window covers a
/// third of τ or more (so that T∞ is seen, not guessed); otherwise the line. A gap in the
/// readings, time going backwards or a new limit start the window again; so does a change of
/// load: a step (the newest bins far off both models' prediction) or a bend (two straight
/// pieces explain the window far better than either model), from where it happened. A forecast
/// is given once 18 s of bins are in.
class Forecaster {
  public:
    static constexpr Seconds binLength{3};
    static constexpr Seconds windowLength{240};
    static constexpr Seconds gapLimit{10};
    static constexpr Seconds minimumSpan{18};

    /// One reading of the source against its limit.
    void add(MonoTime at, double celsius, double limitC);
    /// Forgets every reading.
    void restart();
    /// The latest forecast, its ETA counted down to `now`; nothing before enough readings.
    std::optional<Forecast> current(MonoTime now) const;
    /// How many times the window started again after a load step (for tests and diagnosis).
    int stepsSeen() const { return steps_; }
    /// How many times the window started again at a bend in its course.
    int bendsSeen() const { return bends_; }

    /// The chosen fit of the window, for tests: nothing before a fit.
    struct Fit {
        double start = 0.0;
        std::optional<LineFit> line;
        std::optional<ExponentialFit> exponential;
        bool useExponential = false;
        /// Residual spread of the chosen model per bin, never under the readings' resolution.
        double noise = 0.0;
    };
    const std::optional<Fit>& lastFit() const { return fit_; }

  private:
    struct Bin {
        double t = 0.0;
        double celsius = 0.0;
    };

    void closeBin();
    void refit();
    bool stepInNewestBins();
    void keepFromStep();
    Fit fitWindow() const;
    Forecast forecastFrom(const Fit& fit, double now) const;

    std::deque<Bin> bins_;
    /// The fits made when each of the last few bins closed, newest last.
    std::deque<Fit> history_;
    std::optional<Fit> fit_;
    std::optional<Forecast> forecast_;
    double fitAt_ = 0.0;
    std::optional<double> lastAt_;
    double lastCelsius_ = 0.0;
    double limitC_ = 0.0;
    double origin_ = 0.0;
    long long pendingIndex_ = 0;
    double pendingT_ = 0.0;
    double pendingC_ = 0.0;
    int pendingCount_ = 0;
    int steps_ = 0;
    int bends_ = 0;
};

}  // namespace velmora
