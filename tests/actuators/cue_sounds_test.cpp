#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <cstdlib>
#include <filesystem>
#include <optional>
#include <vector>

#include "actuators/wav_reader.hpp"

namespace velmora {
namespace {

using testing::WavFile;

std::filesystem::path cueFile(const char* name) {
    return std::filesystem::path(VELMORA_CUE_SOUNDS_DIR) / name;
}

void expectPlayableMonoPcm(const WavFile& wav) {
    EXPECT_EQ(wav.format, 1);
    EXPECT_EQ(wav.channels, 1);
    EXPECT_EQ(wav.sampleRate, 44100U);
    EXPECT_EQ(wav.bitsPerSample, 16);
    EXPECT_EQ(wav.blockAlign, 2);
    EXPECT_EQ(wav.byteRate, 88200U);
    EXPECT_EQ(wav.riffSize, wav.fileSize - 8);
}

int peak(const std::vector<std::int16_t>& samples, std::size_t from, std::size_t to) {
    int highest = 0;
    for (std::size_t i = from; i < to; ++i)
        highest = std::max(highest, std::abs(samples[i]));
    return highest;
}

// Upward zero crossings per second: the pitch of a plain tone.
double pitch(const std::vector<std::int16_t>& samples, std::size_t from, std::size_t to) {
    int crossings = 0;
    for (std::size_t i = from + 1; i < to; ++i) {
        if (samples[i - 1] < 0 && samples[i] >= 0) ++crossings;
    }
    return crossings / (static_cast<double>(to - from) / 44100.0);
}

TEST(CueSounds, AlarmIsAValidWavOfSixTenthsOfASecond) {
    const std::optional<WavFile> wav = testing::readWav(cueFile("alarm.wav"));
    ASSERT_TRUE(wav.has_value());
    expectPlayableMonoPcm(*wav);
    EXPECT_NEAR(wav->seconds(), 0.6, 0.001);
}

TEST(CueSounds, TickIsAValidWavOfATenthOfASecond) {
    const std::optional<WavFile> wav = testing::readWav(cueFile("tick.wav"));
    ASSERT_TRUE(wav.has_value());
    expectPlayableMonoPcm(*wav);
    EXPECT_NEAR(wav->seconds(), 0.1, 0.001);
}

TEST(CueSounds, AlarmAlternatesTwoTonesLoudlyWithoutClipping) {
    const std::optional<WavFile> wav = testing::readWav(cueFile("alarm.wav"));
    ASSERT_TRUE(wav.has_value());
    const std::vector<std::int16_t>& s = wav->samples;
    const std::size_t part = s.size() / 4;
    EXPECT_GT(peak(s, 0, s.size()), 12000);
    EXPECT_LT(peak(s, 0, s.size()), 32767);
    const double first = pitch(s, 0, part);
    const double second = pitch(s, part, 2 * part);
    EXPECT_GT(first, second * 1.2);  // two clearly different tones
    EXPECT_NEAR(pitch(s, 2 * part, 3 * part), first, first * 0.05);
    EXPECT_NEAR(pitch(s, 3 * part, s.size()), second, second * 0.05);
}

TEST(CueSounds, TickIsBrightAndDiesAway) {
    const std::optional<WavFile> wav = testing::readWav(cueFile("tick.wav"));
    ASSERT_TRUE(wav.has_value());
    const std::vector<std::int16_t>& s = wav->samples;
    const std::size_t tenth = s.size() / 10;
    EXPECT_GT(peak(s, 0, tenth * 2), 10000);
    EXPECT_LT(peak(s, tenth * 8, s.size()), peak(s, 0, tenth * 2) / 10);
    EXPECT_GT(pitch(s, 0, tenth * 5), 1500.0);
}

TEST(CueSounds, StartAndEndQuietlySoTheSpeakerDoesNotClick) {
    for (const char* name : {"alarm.wav", "tick.wav"}) {
        const std::optional<WavFile> wav = testing::readWav(cueFile(name));
        ASSERT_TRUE(wav.has_value()) << name;
        EXPECT_LT(std::abs(wav->samples.front()), 200) << name;
        EXPECT_LT(std::abs(wav->samples.back()), 200) << name;
    }
}

}  // namespace
}  // namespace velmora
