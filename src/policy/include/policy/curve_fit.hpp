#pragma once

#include <cstddef>
#include <optional>
#include <span>

namespace velmora {

/// One point of a fitted series: seconds from the window's start and degrees Celsius.
struct SeriesPoint {
    double x = 0.0;
    double y = 0.0;
};

/// y = intercept + slope·x, by least squares.
struct LineFit {
    double intercept = 0.0;
    double slope = 0.0;
    /// Residual sum of squares.
    double rss = 0.0;
    /// Standard error of the slope.
    double slopeError = 0.0;

    double at(double x) const { return intercept + slope * x; }
};

/// y = level − distance·e^(−x/tau): a first-order approach to `level`, rising when `distance`
/// is positive.
struct ExponentialFit {
    double level = 0.0;
    double distance = 0.0;
    double tau = 0.0;
    double rss = 0.0;

    double at(double x) const;
};

/// Least squares line; nothing for fewer than three points or points without spread in x.
std::optional<LineFit> fitLine(std::span<const SeriesPoint> points);

/// The exponential with the smallest residual: tau searched over a logarithmic grid between
/// `tauMin` and `tauMax` and refined between the best grid point's neighbours, `level` and
/// `distance` by least squares for each tau. Nothing for fewer than four points. A best tau at
/// either end of the range is returned as found; the caller decides whether to trust it.
std::optional<ExponentialFit> fitExponential(std::span<const SeriesPoint> points, double tauMin,
                                             double tauMax);

/// Two straight pieces joined at a bend: y = a + b·x + change·max(0, x − bendX).
struct HingeFit {
    /// The first point of the second piece.
    std::size_t bend = 0;
    double bendX = 0.0;
    /// How much the slope changes at the bend.
    double change = 0.0;
    double rss = 0.0;
};

/// The bend with the smallest residual, among bends that leave at least `minBefore` points
/// before and `minAfter` points from it on; nothing when no bend fits that.
std::optional<HingeFit> fitHinge(std::span<const SeriesPoint> points, std::size_t minBefore,
                                 std::size_t minAfter);

/// The value F must exceed for a model with one parameter more to explain significantly more,
/// at level `alpha`, with `residualFreedom` degrees of freedom left in the larger model: the
/// square of Student's t quantile (a Cornish–Fisher expansion, within about 3 % from 4
/// degrees of freedom up, and closer with more).
double fCriticalOneExtra(int residualFreedom, double alpha);

}  // namespace velmora
