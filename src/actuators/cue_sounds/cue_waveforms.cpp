#include "cue_waveforms.hpp"

#include <algorithm>
#include <cmath>
#include <cstddef>
#include <numbers>

namespace velmora::cues {
namespace {

constexpr double fullScale = 32767.0;

std::size_t sampleCount(double seconds) {
    return static_cast<std::size_t>(std::lround(seconds * sampleRate));
}

double sine(double hertz, std::size_t index) {
    return std::sin(2.0 * std::numbers::pi * hertz * static_cast<double>(index) / sampleRate);
}

// Short linear ramps at both ends of a segment keep the speaker from clicking.
double edgeRamp(std::size_t index, std::size_t length) {
    const double ramp = 0.005 * sampleRate;
    const auto distance = static_cast<double>(std::min(index, length - 1 - index));
    return std::min(1.0, distance / ramp);
}

std::int16_t toSample(double value) {
    return static_cast<std::int16_t>(std::lround(std::clamp(value, -1.0, 1.0) * fullScale));
}

}  // namespace

std::vector<std::int16_t> alarmWaveform() {
    constexpr double tones[] = {880.0, 660.0};
    const std::size_t segment = sampleCount(0.15);
    std::vector<std::int16_t> samples;
    samples.reserve(segment * 4);
    for (std::size_t part = 0; part < 4; ++part) {
        const double hertz = tones[part % 2];
        for (std::size_t i = 0; i < segment; ++i) {
            // A little third harmonic makes the tone cut through room noise.
            const double tone = 0.8 * sine(hertz, i) + 0.2 * sine(3 * hertz, i);
            samples.push_back(toSample(0.6 * tone * edgeRamp(i, segment)));
        }
    }
    return samples;
}

std::vector<std::int16_t> tickWaveform() {
    const std::size_t length = sampleCount(0.1);
    std::vector<std::int16_t> samples;
    samples.reserve(length);
    for (std::size_t i = 0; i < length; ++i) {
        const double seconds = static_cast<double>(i) / sampleRate;
        const double decay = std::exp(-seconds / 0.018);
        const double ping = 0.75 * sine(2400.0, i) + 0.25 * sine(4800.0, i);
        samples.push_back(toSample(0.7 * ping * decay * edgeRamp(i, length)));
    }
    return samples;
}

}  // namespace velmora::cues
