#include "app/headless/headless_shell.hpp"

#include <gtest/gtest.h>

#include <cerrno>
#include <cstdio>
#include <string>

#include "app/app_harness.hpp"
#include "app/headless/status_line.hpp"

namespace velmora {
namespace {

StatusReport countdownReport(std::int64_t seconds) {
    StatusReport report;
    report.stage = "EMERGENCY";
    report.thermal = "Critical";
    report.cpuTemp = 55.6;
    report.cpuBusy = 12.2;
    report.state = "countdown";
    report.countdown = seconds;
    report.mode = "count";
    return report;
}

/// Everything the shell wrote to its stream.
std::string written(std::FILE* file) {
    std::fflush(file);
    std::rewind(file);
    std::string text;
    for (int c = std::fgetc(file); c != EOF; c = std::fgetc(file))
        text.push_back(static_cast<char>(c));
    return text;
}

TEST(StatusLine, ShowsStageThermalCpuAndCountdown) {
    EXPECT_EQ(statusLineText(countdownReport(7)),
              "EMERGENCY · thermal Critical · CPU 56°C 12% · COUNTDOWN 7s");
}

TEST(StatusLine, AbsentReadingsAndNoCountdown) {
    StatusReport report;
    EXPECT_EQ(statusLineText(report), "n/a · thermal n/a · CPU n/a n/a");
}

TEST(StatusLine, SimulationCountdownIsNamedSo) {
    auto report = countdownReport(3);
    report.simulation = true;
    EXPECT_EQ(statusLineText(report),
              "EMERGENCY · thermal Critical · CPU 56°C 12% · SIMULATION 3s");
}

TEST(ChangeLine, FirstReportAndEveryStageStateOrPageChange) {
    const auto first = countdownReport(10);
    EXPECT_EQ(changeLine(std::nullopt, first), "stage EMERGENCY, state countdown, page count");
    EXPECT_FALSE(changeLine(first, countdownReport(9)).has_value());
    auto fired = first;
    fired.state = "fired";
    EXPECT_EQ(changeLine(first, fired), "stage EMERGENCY, state fired, page count");
    auto sim = first;
    sim.simulation = true;
    EXPECT_EQ(changeLine(first, sim), "stage EMERGENCY, state countdown, page count (simulation)");
}

TEST(ChangeLine, ConsentPageSaysHowToAnswer) {
    StatusReport report;
    report.mode = "consent";
    EXPECT_EQ(changeLine(std::nullopt, report),
              "stage n/a, state idle, page consent (answer with --consent on or --consent off)");
}

TEST(HeadlessShell, OnATerminalKeepsOneStatusLineAndPrintsChanges) {
    std::FILE* out = std::tmpfile();
    ASSERT_NE(out, nullptr);
    HeadlessShell shell(out, true, nullptr, {});
    shell.statusChanged(countdownReport(10));
    shell.statusChanged(countdownReport(10));  // unchanged: nothing redrawn
    shell.statusChanged(countdownReport(9));
    shell.finish();
    const auto text = written(out);
    std::fclose(out);
    EXPECT_NE(text.find("stage EMERGENCY, state countdown, page count\n"), std::string::npos);
    EXPECT_NE(text.find("\r\x1b[2KEMERGENCY · thermal Critical · CPU 56°C 12% · COUNTDOWN 10s"),
              std::string::npos);
    EXPECT_NE(text.find("COUNTDOWN 9s"), std::string::npos);
    EXPECT_EQ(text.find("COUNTDOWN 10s"), text.rfind("COUNTDOWN 10s"));
    EXPECT_TRUE(text.ends_with("\r\x1b[2K"));
}

TEST(HeadlessShell, WithoutATerminalOnlyTheChangeLines) {
    std::FILE* out = std::tmpfile();
    ASSERT_NE(out, nullptr);
    HeadlessShell shell(out, false, nullptr, {});
    shell.statusChanged(countdownReport(10));
    shell.statusChanged(countdownReport(9));
    shell.finish();
    const auto text = written(out);
    std::fclose(out);
    EXPECT_EQ(text.find('\r'), std::string::npos);
    EXPECT_EQ(text.find("COUNTDOWN"), std::string::npos);
    EXPECT_TRUE(text.ends_with(" stage EMERGENCY, state countdown, page count\n"));
}

// A stream whose reader has gone: every write fails, as a pipe's does after SIGPIPE is ignored.
struct ClosedReader {
    int writes = 0;
    static ssize_t write(void* cookie, const char*, std::size_t) {
        ++static_cast<ClosedReader*>(cookie)->writes;
        errno = EPIPE;
        return -1;
    }
};

TEST(HeadlessShell, StopsWritingOnceTheReaderHasGone) {
    ClosedReader reader;
    std::FILE* out = ::fopencookie(&reader, "w", {nullptr, &ClosedReader::write, nullptr, nullptr});
    ASSERT_NE(out, nullptr);
    HeadlessShell shell(out, true, nullptr, {});
    shell.statusChanged(countdownReport(10));
    ASSERT_EQ(reader.writes, 1);
    StatusReport fired = countdownReport(0);
    fired.state = "fired";
    shell.statusChanged(fired);
    shell.statusChanged(countdownReport(3));
    shell.finish();
    EXPECT_EQ(reader.writes, 1);
    std::fclose(out);
}

TEST(HeadlessShell, ShowsNoPagesAndPlaysPresentationCuesThroughTheSounder) {
    auto sounds = std::make_shared<testing::RecordingSounder>();
    bool quit = false;
    HeadlessShell shell(stdout, false, sounds, [&quit] { quit = true; });
    EXPECT_FALSE(shell.pageFile("index").has_value());
    EXPECT_FALSE(shell.windowVisible());
    shell.playSound("Tink");
    shell.playSound("Sosumi");
    EXPECT_EQ(sounds->cues, (std::vector<std::string>{"tick", "urgent"}));
    shell.terminate();
    EXPECT_TRUE(quit);
}

}  // namespace
}  // namespace velmora
