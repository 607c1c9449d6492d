#include "forecast/test_curves.hpp"

#include <algorithm>
#include <cmath>
#include <functional>
#include <random>

namespace velmora::testing {

namespace {

using Random = std::mt19937;

double uniform(Random& random, double lo, double hi) {
    return std::uniform_real_distribution<double>(lo, hi)(random);
}

double logUniform(Random& random, double lo, double hi) {
    return std::exp(uniform(random, std::log(lo), std::log(hi)));
}

// Heat that flows toward a level that may move: dT/dt = (level(t) − T) / tau, in small steps.
std::vector<double> firstOrder(double startC, double tau,
                               const std::function<double(double)>& level, double length) {
    constexpr int kSubsteps = 20;
    std::vector<double> values;
    double celsius = startC;
    for (int second = 0; second <= static_cast<int>(length); ++second) {
        values.push_back(celsius);
        for (int k = 0; k < kSubsteps; ++k) {
            const double t = second + static_cast<double>(k) / kSubsteps;
            celsius += (level(t) - celsius) / tau / kSubsteps;
        }
    }
    return values;
}

// Noise, whole-degree readings and the odd missing second.
void read(TestCurve& curve, const std::vector<double>& exact, Random& random) {
    const double sigma = uniform(random, 0.2, 0.5);
    std::normal_distribution<double> noise(0.0, sigma);
    std::uniform_real_distribution<double> chance(0.0, 1.0);
    for (std::size_t i = 0; i < exact.size(); ++i) {
        const double reading = std::round(exact[i] + noise(random));
        if (i > 0 && chance(random) < 0.02) continue;
        curve.readings.push_back({static_cast<double>(i), reading});
        curve.truth.push_back(exact[i]);
    }
    for (std::size_t i = 0; i < exact.size(); ++i) {
        if (exact[i] >= curve.limitC) {
            curve.crossesAt = static_cast<double>(i);
            break;
        }
    }
}

TestCurve rise(Random& random, double limitC, bool over) {
    TestCurve curve;
    curve.kind = over ? "rise over" : "rise under";
    curve.limitC = limitC;
    const double idle = uniform(random, 35.0, 60.0);
    const double stepAt = uniform(random, 30.0, 120.0);
    const double tau = logUniform(random, 20.0, 400.0);
    const double level =
        over ? limitC + uniform(random, 3.0, 25.0) : limitC - uniform(random, 3.0, 20.0);
    const double start = std::min(idle, level - 15.0);
    double length = stepAt + std::clamp(4.0 * tau, 300.0, 1200.0);
    if (over)
        length =
            stepAt + std::min(1200.0, tau * std::log((level - start) / (level - limitC)) + 30.0);
    const auto exact = firstOrder(
        start, tau, [&](double t) { return t < stepAt ? start : level; }, length);
    read(curve, exact, random);
    curve.judgedFrom = stepAt + 20.0;
    curve.quietFrom = stepAt + tau;
    return curve;
}

TestCurve fans(Random& random, double limitC) {
    TestCurve curve;
    curve.kind = "fans";
    curve.limitC = limitC;
    const double idle = uniform(random, 35.0, 60.0);
    const double stepAt = uniform(random, 30.0, 120.0);
    const double tau = logUniform(random, 20.0, 400.0);
    const double hot = limitC + uniform(random, 5.0, 20.0);
    const double cooled = limitC - uniform(random, 4.0, 15.0);
    const double crossing = tau * std::log((hot - idle) / (hot - limitC));
    const double fansAt = stepAt + uniform(random, 0.2, 0.5) * crossing;
    const double ramp = uniform(random, 20.0, 60.0);
    const auto level = [=](double t) {
        if (t < stepAt) return idle;
        if (t < fansAt) return hot;
        const double share = std::min(1.0, (t - fansAt) / ramp);
        return hot + (cooled - hot) * share;
    };
    const double length = fansAt + ramp + std::clamp(4.0 * tau, 300.0, 1200.0);
    read(curve, firstOrder(idle, tau, level, length), random);
    curve.judgedFrom = stepAt + 20.0;
    curve.quietFrom = fansAt + ramp + tau;
    return curve;
}

TestCurve ramp(Random& random, double limitC) {
    TestCurve curve;
    curve.kind = "ramp";
    curve.limitC = limitC;
    const double start = limitC - uniform(random, 10.0, 35.0);
    const double perSecond = uniform(random, 1.0, 6.0) / 60.0;
    const double stepAt = uniform(random, 30.0, 120.0);
    const double length = stepAt + (limitC - start) / perSecond + 30.0;
    std::vector<double> exact;
    for (int second = 0; second <= static_cast<int>(length); ++second)
        exact.push_back(start + perSecond * std::max(0.0, second - stepAt));
    read(curve, exact, random);
    curve.judgedFrom = stepAt + 20.0;
    curve.quietFrom = length;
    return curve;
}

}  // namespace

std::vector<TestCurve> makeTestCurves(unsigned seed, int count, double limitC) {
    Random random(seed);
    std::vector<TestCurve> curves;
    for (int i = 0; i < count; ++i) {
        switch (i % 4) {
            case 0:
                curves.push_back(rise(random, limitC, true));
                break;
            case 1:
                curves.push_back(rise(random, limitC, false));
                break;
            case 2:
                curves.push_back(fans(random, limitC));
                break;
            default:
                curves.push_back(ramp(random, limitC));
                break;
        }
    }
    return curves;
}

std::vector<ReplaySample> exactRise(double idleC, double levelC, double tau, double stepAt,
                                    double length) {
    std::vector<ReplaySample> samples;
    for (int second = 0; second <= static_cast<int>(length); ++second) {
        const double t = second;
        const double x = t - stepAt;
        const double celsius = x < 0 ? idleC : levelC - (levelC - idleC) * std::exp(-x / tau);
        samples.push_back({t, celsius});
    }
    return samples;
}

}  // namespace velmora::testing
