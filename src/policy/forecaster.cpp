#include "policy/forecaster.hpp"

#include <algorithm>
#include <cmath>

namespace velmora {

namespace {

// The range of time constants searched; the shortest a 3-s bin can show.
constexpr double kTauMin = 3.0;
constexpr double kTauMax = 2000.0;
// The exponential is believed only when the window spans this share of its time constant.
constexpr double kCoverage = 1.0 / 3.0;
// Significance of the F-test between the exponential and the line.
constexpr double kAlpha = 0.001;
// Whole-degree sensors: a bin's spread is never taken as smaller than this.
constexpr double kResolution = 0.3;
// A step: the newest bins all this far off both models, on the same side.
constexpr int kStepBins = 3;
constexpr double kStepSigmas = 4.0;
constexpr double kStepMinimum = 1.5;
// A bend: two straight pieces explain the window far better than either model does, and the
// slope changes by at least this much. The search over the bend's place costs significance, so
// the test is stricter than the one between the models.
constexpr double kBendAlpha = 1e-5;
constexpr double kMinimumBend = 0.3 / 60.0;
constexpr std::size_t kBendMinBins = 10;
constexpr std::size_t kBinsBeforeBend = 3;
constexpr std::size_t kBinsAfterBend = 7;
// A level this close under the limit is within the fit's own uncertainty of it: it is taken as
// a crossing, toward a level half a degree above the limit.
constexpr double kLevelMargin = 2.0;
constexpr double kNearLevelAbove = 0.5;
// A rise smaller than this, or still to come, is no rise.
constexpr double kMinimumRiseC = 1.0;
constexpr double kMinimumSlope = 0.1 / 60.0;
constexpr double kSlopeSigmas = 3.0;
// A straight line's crossing further off than this says nothing.
constexpr double kLongestLineEta = 3600.0;

std::vector<SeriesPoint> pointsFrom(const auto& bins, double start) {
    std::vector<SeriesPoint> points;
    points.reserve(bins.size());
    for (const auto& bin : bins)
        points.push_back({bin.t - start, bin.celsius});
    return points;
}

bool exponentialExplainsMore(const LineFit& line, const ExponentialFit& exp, std::size_t n) {
    const int freedom = static_cast<int>(n) - 3;
    if (freedom < 1) return false;
    const double gain = line.rss - exp.rss;
    if (!(gain > 0.0)) return false;
    // Exact data: nothing is left for the exponential to miss.
    if (exp.rss <= 1e-12 * (1.0 + line.rss)) return true;
    const double f = gain / (exp.rss / freedom);
    return f > fCriticalOneExtra(freedom, kAlpha);
}

// Where the window should start again because the course changed inside it; nothing when it
// did not.
std::optional<std::size_t> bendIn(const std::vector<SeriesPoint>& points,
                                  const Forecaster::Fit& fit) {
    if (points.size() < kBendMinBins || !fit.line) return std::nullopt;
    const auto hinge = fitHinge(points, kBinsBeforeBend, kBinsAfterBend);
    if (!hinge || std::fabs(hinge->change) < kMinimumBend) return std::nullopt;
    double best = fit.line->rss;
    if (fit.exponential) best = std::min(best, fit.exponential->rss);
    const int freedom = static_cast<int>(points.size()) - 4;
    const double gain = best - hinge->rss;
    if (!(gain > 0.0)) return std::nullopt;
    const bool exact = hinge->rss <= 1e-12 * (1.0 + best);
    if (!exact && gain / (hinge->rss / freedom) <= fCriticalOneExtra(freedom, kBendAlpha)) {
        return std::nullopt;
    }
    return hinge->bend;
}

}  // namespace

void Forecaster::restart() {
    bins_.clear();
    history_.clear();
    fit_.reset();
    forecast_.reset();
    lastAt_.reset();
    pendingT_ = 0.0;
    pendingC_ = 0.0;
    pendingCount_ = 0;
}

void Forecaster::add(MonoTime at, double celsius, double limitC) {
    const double t = at.seconds();
    if (!std::isfinite(t) || !std::isfinite(celsius) || !std::isfinite(limitC)) return;
    const bool gap = lastAt_ && (t < *lastAt_ || t - *lastAt_ > gapLimit.count());
    if (gap || (lastAt_ && limitC != limitC_)) restart();
    if (!lastAt_ && bins_.empty() && pendingCount_ == 0) origin_ = t;
    lastAt_ = t;
    lastCelsius_ = celsius;
    limitC_ = limitC;
    const auto index = static_cast<long long>(std::floor((t - origin_) / binLength.count()));
    if (pendingCount_ > 0 && index != pendingIndex_) closeBin();
    if (pendingCount_ == 0) pendingIndex_ = index;
    pendingT_ += t;
    pendingC_ += celsius;
    ++pendingCount_;
}

void Forecaster::closeBin() {
    bins_.push_back({pendingT_ / pendingCount_, pendingC_ / pendingCount_});
    pendingT_ = 0.0;
    pendingC_ = 0.0;
    pendingCount_ = 0;
    const double newest = bins_.back().t;
    while (!bins_.empty() && newest - bins_.front().t > windowLength.count())
        bins_.pop_front();
    if (stepInNewestBins()) {
        ++steps_;
        keepFromStep();
    }
    refit();
}

// Both models, fitted before the newest bins were in, miss each of them by far, on one side.
bool Forecaster::stepInNewestBins() {
    // The fit made when the bin before the newest ones closed: it has seen none of them.
    if (history_.size() < static_cast<std::size_t>(kStepBins)) return false;
    if (bins_.size() <= static_cast<std::size_t>(kStepBins)) return false;
    const Fit& before = history_[history_.size() - kStepBins];
    const double threshold = std::max(kStepSigmas * before.noise, kStepMinimum);
    const auto missesAll = [&](auto model) {
        int side = 0;
        for (std::size_t i = bins_.size() - kStepBins; i < bins_.size(); ++i) {
            const double residual = bins_[i].celsius - model(bins_[i].t - before.start);
            if (std::fabs(residual) <= threshold) return false;
            const int sign = residual > 0 ? 1 : -1;
            if (side != 0 && sign != side) return false;
            side = sign;
        }
        return true;
    };
    if (before.line && !missesAll([&](double x) { return before.line->at(x); })) return false;
    if (before.exponential && !missesAll([&](double x) { return before.exponential->at(x); })) {
        return false;
    }
    return before.line.has_value();
}

// Keeps the bins that already left the old course: the newest ones and any just before them
// that were drifting off the same way.
void Forecaster::keepFromStep() {
    const Fit& before = history_[history_.size() - kStepBins];
    const auto model = [&](double t) {
        return before.useExponential && before.exponential
                   ? before.exponential->at(t - before.start)
                   : before.line->at(t - before.start);
    };
    std::size_t first = bins_.size() - kStepBins;
    const double side = bins_.back().celsius - model(bins_.back().t);
    while (first > 0) {
        const double residual = bins_[first - 1].celsius - model(bins_[first - 1].t);
        if (residual * side <= 0.0 || std::fabs(residual) <= 2.0 * before.noise) break;
        --first;
    }
    bins_.erase(bins_.begin(), bins_.begin() + static_cast<std::ptrdiff_t>(first));
    history_.clear();
    fit_.reset();
    forecast_.reset();
}

Forecaster::Fit Forecaster::fitWindow() const {
    Fit fit;
    fit.start = bins_.front().t;
    const auto points = pointsFrom(bins_, fit.start);
    fit.line = fitLine(points);
    fit.exponential = fitExponential(points, kTauMin, kTauMax);
    const double span = points.back().x;
    if (fit.line && fit.exponential) {
        const ExponentialFit& exp = *fit.exponential;
        const bool inRange = exp.tau > kTauMin * 1.01 && exp.tau < kTauMax / 1.01;
        fit.useExponential = inRange && span >= kCoverage * exp.tau &&
                             exponentialExplainsMore(*fit.line, exp, points.size());
    }
    const double rss = fit.useExponential ? fit.exponential->rss : fit.line ? fit.line->rss : 0.0;
    const double freedom = static_cast<double>(points.size()) - (fit.useExponential ? 3.0 : 2.0);
    fit.noise = std::max(kResolution, freedom > 0 ? std::sqrt(rss / freedom) : 0.0);
    return fit;
}

void Forecaster::refit() {
    if (bins_.size() < 5) return;
    Fit fit = fitWindow();
    if (!fit.line) return;
    if (const auto bend = bendIn(pointsFrom(bins_, fit.start), fit)) {
        ++bends_;
        bins_.erase(bins_.begin(), bins_.begin() + static_cast<std::ptrdiff_t>(*bend));
        history_.clear();
        fit = fitWindow();
        if (!fit.line) return;
    }
    history_.push_back(fit);
    while (history_.size() > static_cast<std::size_t>(kStepBins) + 1)
        history_.pop_front();
    fit_ = fit;
    const double span = bins_.back().t - bins_.front().t;
    if (span + 1e-9 < minimumSpan.count()) {
        forecast_.reset();
        return;
    }
    fitAt_ = *lastAt_;
    forecast_ = forecastFrom(fit, fitAt_);
}

Forecast Forecaster::forecastFrom(const Fit& fit, double now) const {
    Forecast out;
    out.limitC = limitC_;
    const double limit = limitC_;
    const double x = now - fit.start;
    if (fit.useExponential) {
        const ExponentialFit& exp = *fit.exponential;
        const double nowC = exp.at(x);
        if (!(exp.distance > 0.0)) return out;
        if (exp.level > limit - kLevelMargin) {
            const double level = std::max(exp.level, limit + kNearLevelAbove);
            out.kind = ForecastKind::critical;
            out.levelC = exp.level;
            const double eta =
                nowC >= limit ? 0.0 : exp.tau * std::log((level - nowC) / (level - limit));
            out.eta = Seconds(std::max(0.0, eta));
        } else if (exp.level - nowC >= kMinimumRiseC) {
            out.kind = ForecastKind::levelling;
            out.levelC = exp.level;
        }
        return out;
    }
    const LineFit& line = *fit.line;
    const bool rising = line.slope > kMinimumSlope && line.slope > kSlopeSigmas * line.slopeError;
    if (!rising) return out;
    const double nowC = line.at(x);
    const double eta = nowC >= limit ? 0.0 : (limit - nowC) / line.slope;
    if (eta > kLongestLineEta) return out;
    out.kind = ForecastKind::critical;
    out.eta = Seconds(std::max(0.0, eta));
    out.risePerMinuteC = line.slope * 60.0;
    return out;
}

std::optional<Forecast> Forecaster::current(MonoTime now) const {
    if (!forecast_ || !lastAt_) return std::nullopt;
    if (now.seconds() - *lastAt_ > gapLimit.count()) return std::nullopt;
    Forecast out = *forecast_;
    out.celsius = lastCelsius_;
    if (out.eta) {
        const double elapsed = std::max(0.0, now.seconds() - fitAt_);
        out.eta = Seconds(std::max(0.0, out.eta->count() - elapsed));
    }
    return out;
}

}  // namespace velmora
