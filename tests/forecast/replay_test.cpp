#include "forecast/replay.hpp"

#include <gtest/gtest.h>

#include <array>
#include <cstdio>
#include <sstream>
#include <string>

#include "forecast/test_curves.hpp"

namespace velmora::testing {
namespace {

ReplayInput read(const std::string& text) {
    std::istringstream in(text);
    return readReplayInput(in);
}

TEST(ForecastReplay, ReadsSecondsAndCelsiusLines) {
    const auto input = read("0,50\n1, 50.5\r\n\n2,+51\n");
    ASSERT_FALSE(input.problem.has_value()) << *input.problem;
    ASSERT_EQ(input.samples.size(), 3U);
    EXPECT_EQ(input.samples[1].celsius, 50.5);
    EXPECT_EQ(input.samples[2].t, 2.0);
}

TEST(ForecastReplay, RefusesWhatIsNotASeries) {
    EXPECT_EQ(*read("").problem, "no readings: the input is empty");
    EXPECT_EQ(*read("0,50\n1,hot\n").problem,
              "line 2: expected \"seconds,celsius\" (two numbers), got \"1,hot\"");
    EXPECT_EQ(*read("0,50\n5,51\n4,52\n").problem, "line 3: time goes backwards (4 s after 5 s)");
    EXPECT_TRUE(read("0;50\n").problem.has_value());
    EXPECT_TRUE(read("0,50,3\n").problem.has_value());
    EXPECT_TRUE(read("nan,50\n").problem.has_value());
}

TEST(ForecastReplay, PrintsOneLinePerSampleWithTheEtaOrNone) {
    std::vector<ReplaySample> samples;
    for (int t = 0; t <= 60; ++t)
        samples.push_back({static_cast<double>(t), 80.0 + 0.1 * t});
    const auto etas = replayEtas(samples, 100.0);
    std::ostringstream out;
    writeReplay(out, samples, etas);
    std::istringstream lines(out.str());
    std::string line;
    std::string last;
    int count = 0;
    while (std::getline(lines, line)) {
        last = line;
        const std::string t = std::to_string(count);
        ASSERT_EQ(line.rfind(t + ",", 0), 0U) << line;
        if (count < 10) {
            EXPECT_EQ(line, t + ",none");
        }
        ++count;
    }
    EXPECT_EQ(count, 61);
    // 86 °C at 60 s, rising 0.1 °C/s: 140 s to go.
    EXPECT_EQ(last, "60,140");
}

// The executable gives what the same code path gives in the test.
TEST(ForecastReplay, TheToolPrintsWhatTheForecasterSays) {
    const auto curve = makeTestCurves(7, 1).front();
    const std::string csv = ::testing::TempDir() + "forecast_replay_curve.csv";
    {
        std::FILE* file = std::fopen(csv.c_str(), "w");
        ASSERT_NE(file, nullptr);
        for (const auto& s : curve.readings)
            std::fprintf(file, "%g,%g\n", s.t, s.celsius);
        std::fclose(file);
    }
    const std::string command = std::string(VELMORA_FORECAST_REPLAY) + " --limit 100 < " + csv;
    std::FILE* pipe = popen(command.c_str(), "r");
    ASSERT_NE(pipe, nullptr);
    std::string output;
    std::array<char, 4096> buffer{};
    while (std::fgets(buffer.data(), buffer.size(), pipe) != nullptr)
        output += buffer.data();
    EXPECT_EQ(pclose(pipe), 0);
    std::ostringstream expected;
    writeReplay(expected, curve.readings, replayEtas(curve.readings, 100.0));
    EXPECT_EQ(output, expected.str());
}

}  // namespace
}  // namespace velmora::testing
