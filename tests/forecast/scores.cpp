#include "forecast/scores.hpp"

#include <algorithm>
#include <array>
#include <cmath>
#include <cstdio>
#include <deque>

namespace velmora::testing {

namespace {

constexpr double kAheadFrom = 30.0;
constexpr double kAheadTo = 300.0;
constexpr double kMissBeyond = 600.0;
constexpr double kLateShare = 1.25;
constexpr double kLateSlack = 5.0;
constexpr double kAlarmWithin = 300.0;

double share(int part, int whole) {
    return whole > 0 ? static_cast<double>(part) / whole : 0.0;
}

void judgeCrossing(ForecastScores& scores, double truthEta, std::optional<double> eta) {
    ++scores.crossingAhead;
    if (!eta || *eta > kMissBeyond) {
        ++scores.misses;
        return;
    }
    if (*eta > kLateShare * truthEta + kLateSlack) ++scores.late;
    scores.relativeErrors.push_back(std::abs(*eta - truthEta) / truthEta);
}

}  // namespace

double ForecastScores::missRate() const {
    return share(misses, crossingAhead);
}

double ForecastScores::lateRate() const {
    return share(late, crossingAhead);
}

double ForecastScores::falseCriticalRate() const {
    return share(falseCritical, quiet);
}

double ForecastScores::medianRelativeError() const {
    if (relativeErrors.empty()) return 1.0;
    std::vector<double> sorted = relativeErrors;
    const auto middle = sorted.begin() + static_cast<std::ptrdiff_t>(sorted.size() / 2);
    std::nth_element(sorted.begin(), middle, sorted.end());
    return *middle;
}

std::string ForecastScores::summary(const std::string& name) const {
    std::array<char, 320> line{};
    std::snprintf(line.data(), line.size(),
                  "%-12s misses %5.1f %% (%d/%d), late %5.1f %% (%d), false critical within 5 "
                  "min %5.1f %% (%d/%d; curves %d/%d), median relative error %5.1f %%",
                  name.c_str(), 100.0 * missRate(), misses, crossingAhead, 100.0 * lateRate(), late,
                  100.0 * falseCriticalRate(), falseCritical, quiet, quietCurvesAlarmed,
                  quietCurves, 100.0 * medianRelativeError());
    return line.data();
}

ForecastScores scoreForecasts(const std::vector<TestCurve>& curves, const EtaReplay& replay) {
    ForecastScores scores;
    for (const TestCurve& curve : curves) {
        const auto etas = replay(curve);
        bool alarmed = false;
        if (!curve.crossesAt) ++scores.quietCurves;
        for (std::size_t i = 0; i < curve.readings.size() && i < etas.size(); ++i) {
            const double t = curve.readings[i].t;
            if (curve.crossesAt) {
                const double truthEta = *curve.crossesAt - t;
                if (t >= curve.judgedFrom && truthEta >= kAheadFrom && truthEta <= kAheadTo) {
                    judgeCrossing(scores, truthEta, etas[i]);
                }
            } else if (t >= curve.quietFrom) {
                ++scores.quiet;
                if (etas[i] && *etas[i] <= kAlarmWithin) {
                    ++scores.falseCritical;
                    alarmed = true;
                }
            }
        }
        if (alarmed) ++scores.quietCurvesAlarmed;
    }
    return scores;
}

std::vector<std::optional<double>> plainLineEtas(const std::vector<ReplaySample>& samples,
                                                 double limitC) {
    constexpr double kWindow = 240.0;
    std::deque<ReplaySample> window;
    std::vector<std::optional<double>> etas;
    for (const ReplaySample& sample : samples) {
        window.push_back(sample);
        while (sample.t - window.front().t > kWindow)
            window.pop_front();
        double n = 0, sx = 0, sy = 0, sxx = 0, sxy = 0;
        for (const ReplaySample& s : window) {
            const double x = s.t - sample.t;
            n += 1;
            sx += x;
            sy += s.celsius;
            sxx += x * x;
            sxy += x * s.celsius;
        }
        const double spread = n * sxx - sx * sx;
        std::optional<double> eta;
        if (n >= 3 && spread > 0) {
            const double slope = (n * sxy - sx * sy) / spread;
            const double now = (sy - slope * sx) / n;
            if (now >= limitC) {
                eta = 0.0;
            } else if (slope > 0) {
                eta = (limitC - now) / slope;
            }
        }
        etas.push_back(eta);
    }
    return etas;
}

}  // namespace velmora::testing
