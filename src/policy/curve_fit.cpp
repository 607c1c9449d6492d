#include "policy/curve_fit.hpp"

#include <algorithm>
#include <cmath>
#include <limits>

namespace velmora {

namespace {

constexpr int kGridPoints = 32;
constexpr int kRefineSteps = 18;

// The series with its mean taken out, so that each trial of tau needs one pass over it and
// its residual does not cancel against the size of the temperatures.
struct Centred {
    std::span<const SeriesPoint> points;
    double meanY = 0.0;
    double syy = 0.0;

    explicit Centred(std::span<const SeriesPoint> p) : points(p) {
        for (const SeriesPoint& point : points)
            meanY += point.y;
        meanY /= static_cast<double>(points.size());
        for (const SeriesPoint& point : points)
            syy += (point.y - meanY) * (point.y - meanY);
    }
};

// Least squares of y on one regressor g(x) plus a constant; the residual from the sums.
template <typename Regressor>
std::optional<LineFit> fitOn(const Centred& series, Regressor g) {
    double sr = 0.0;
    double srr = 0.0;
    double sry = 0.0;
    for (const SeriesPoint& p : series.points) {
        const double r = g(p.x);
        sr += r;
        srr += r * r;
        sry += r * (p.y - series.meanY);
    }
    const auto n = static_cast<double>(series.points.size());
    const double spread = srr - sr * sr / n;
    if (!(spread > 1e-12 * (1.0 + srr))) return std::nullopt;
    LineFit fit;
    fit.slope = sry / spread;
    fit.intercept = series.meanY - fit.slope * sr / n;
    fit.rss = std::max(0.0, series.syy - sry * sry / spread);
    const double freedom = n - 2.0;
    if (freedom > 0.0) fit.slopeError = std::sqrt(fit.rss / freedom / spread);
    return fit;
}

// The residual summed point by point: on exact data the sums cancel to rounding noise.
template <typename Regressor>
void exactResidual(std::span<const SeriesPoint> points, LineFit& fit, Regressor g) {
    fit.rss = 0.0;
    for (const SeriesPoint& p : points) {
        const double residual = p.y - fit.at(g(p.x));
        fit.rss += residual * residual;
    }
}

std::optional<ExponentialFit> fitForTau(const Centred& series, double tau, bool exact = false) {
    const auto decay = [tau](double x) { return std::exp(-x / tau); };
    auto fit = fitOn(series, decay);
    if (!fit) return std::nullopt;
    if (exact) exactResidual(series.points, *fit, decay);
    return ExponentialFit{fit->intercept, -fit->slope, tau, fit->rss};
}

double rssAt(const Centred& series, double logTau) {
    const auto fit = fitForTau(series, std::exp(logTau));
    return fit ? fit->rss : std::numeric_limits<double>::infinity();
}

// Golden-section search for the smallest residual between two logarithms of tau.
double refineLogTau(const Centred& points, double lo, double hi) {
    const double ratio = (std::sqrt(5.0) - 1.0) / 2.0;
    double a = hi - ratio * (hi - lo);
    double b = lo + ratio * (hi - lo);
    double fa = rssAt(points, a);
    double fb = rssAt(points, b);
    for (int i = 0; i < kRefineSteps; ++i) {
        if (fa <= fb) {
            hi = b;
            b = a;
            fb = fa;
            a = hi - ratio * (hi - lo);
            fa = rssAt(points, a);
        } else {
            lo = a;
            a = b;
            fa = fb;
            b = lo + ratio * (hi - lo);
            fb = rssAt(points, b);
        }
    }
    return fa <= fb ? a : b;
}

// The standard normal quantile of 1 − p for small p (Abramowitz and Stegun 26.2.23).
double upperNormalQuantile(double p) {
    const double t = std::sqrt(-2.0 * std::log(p));
    return t - (2.515517 + 0.802853 * t + 0.010328 * t * t) /
                   (1.0 + 1.432788 * t + 0.189269 * t * t + 0.001308 * t * t * t);
}

}  // namespace

double ExponentialFit::at(double x) const {
    return level - distance * std::exp(-x / tau);
}

std::optional<LineFit> fitLine(std::span<const SeriesPoint> points) {
    if (points.size() < 3) return std::nullopt;
    const auto identity = [](double x) { return x; };
    auto fit = fitOn(Centred(points), identity);
    if (fit) exactResidual(points, *fit, identity);
    return fit;
}

std::optional<ExponentialFit> fitExponential(std::span<const SeriesPoint> points, double tauMin,
                                             double tauMax) {
    if (points.size() < 4 || !(tauMin > 0.0) || !(tauMax > tauMin)) return std::nullopt;
    const Centred series(points);
    const double lo = std::log(tauMin);
    const double step = (std::log(tauMax) - lo) / (kGridPoints - 1);
    int best = -1;
    double bestRss = std::numeric_limits<double>::infinity();
    for (int i = 0; i < kGridPoints; ++i) {
        const double rss = rssAt(series, lo + step * i);
        if (rss < bestRss) {
            bestRss = rss;
            best = i;
        }
    }
    if (best < 0) return std::nullopt;
    const double from = lo + step * (best > 0 ? best - 1 : 0);
    const double to = lo + step * (best < kGridPoints - 1 ? best + 1 : best);
    const double logTau = refineLogTau(series, from, to);
    const double tau = rssAt(series, logTau) <= bestRss ? logTau : lo + step * best;
    return fitForTau(series, std::exp(tau), true);
}

namespace {

std::optional<HingeFit> hingeAt(std::span<const SeriesPoint> points, std::size_t bend) {
    const double bendX = points[bend].x;
    const auto n = static_cast<double>(points.size());
    double mx = 0.0;
    double mh = 0.0;
    double my = 0.0;
    for (const SeriesPoint& p : points) {
        mx += p.x;
        mh += std::max(0.0, p.x - bendX);
        my += p.y;
    }
    mx /= n;
    mh /= n;
    my /= n;
    double sxx = 0.0, sxh = 0.0, shh = 0.0, sxy = 0.0, shy = 0.0, syy = 0.0;
    for (const SeriesPoint& p : points) {
        const double dx = p.x - mx;
        const double dh = std::max(0.0, p.x - bendX) - mh;
        const double dy = p.y - my;
        sxx += dx * dx;
        sxh += dx * dh;
        shh += dh * dh;
        sxy += dx * dy;
        shy += dh * dy;
        syy += dy * dy;
    }
    const double det = sxx * shh - sxh * sxh;
    if (!(det > 1e-12 * (1.0 + sxx * shh))) return std::nullopt;
    const double slope = (sxy * shh - shy * sxh) / det;
    const double change = (shy * sxx - sxy * sxh) / det;
    return HingeFit{bend, bendX, change, std::max(0.0, syy - slope * sxy - change * shy)};
}

}  // namespace

std::optional<HingeFit> fitHinge(std::span<const SeriesPoint> points, std::size_t minBefore,
                                 std::size_t minAfter) {
    std::optional<HingeFit> best;
    if (minBefore < 1) minBefore = 1;
    for (std::size_t bend = minBefore; bend + minAfter <= points.size(); ++bend) {
        const auto fit = hingeAt(points, bend);
        if (fit && (!best || fit->rss < best->rss)) best = fit;
    }
    return best;
}

double fCriticalOneExtra(int residualFreedom, double alpha) {
    const double z = upperNormalQuantile(alpha / 2.0);
    const double v = residualFreedom < 1 ? 1.0 : static_cast<double>(residualFreedom);
    const double z2 = z * z;
    const double g1 = (z2 + 1.0) * z / 4.0;
    const double g2 = ((5.0 * z2 + 16.0) * z2 + 3.0) * z / 96.0;
    const double g3 = (((3.0 * z2 + 19.0) * z2 + 17.0) * z2 - 15.0) * z / 384.0;
    const double g4 =
        ((((79.0 * z2 + 776.0) * z2 + 1482.0) * z2 - 1920.0) * z2 - 945.0) * z / 92160.0;
    const double t = z + g1 / v + g2 / (v * v) + g3 / (v * v * v) + g4 / (v * v * v * v);
    return t * t;
}

}  // namespace velmora
