#include <gtest/gtest.h>

#include <chrono>
#include <string>
#include <vector>

#include "actuators/log_recorder.hpp"
#include "actuators/mute_sounder.hpp"
#include "actuators/named_cue_sounder.hpp"
#include "actuators/system_sounder.hpp"
#include "policy/countdown.hpp"
#include "policy/timestamp.hpp"

namespace velmora {
namespace {

using Lines = std::vector<std::string>;

TEST(MuteSounder, WritesOneLinePerCueAndPlaysNothing) {
    testing::LogRecorder log;
    MuteSounder sounder(log.sink());
    sounder.alarm();
    sounder.urgent();
    sounder.tick();
    EXPECT_EQ(log.lines(), (Lines{"sound: alarm (muted)", "sound: urgent alert (muted)",
                                  "sound: tick (muted)"}));
}

// Drives a real countdown at the watchdog's 0.25 s poll, sounding a tick for each cue as the
// watchdog does, and looks at the second from 6 s left to 5 s left.
TEST(MuteSounder, OneCountdownSecondGivesExactlyOneTickLine) {
    testing::LogRecorder log;
    MuteSounder sounder(log.sink());
    Countdown countdown(CountdownConfig::production(), false);
    const MonoTime start = MonoTime::fromSeconds(1000);
    static_cast<void>(countdown.startCountdown(start));
    std::size_t linesBefore = 0;
    for (int quarter = 1; quarter <= 20; ++quarter) {
        if (quarter == 17) linesBefore = log.lines().size();
        for (const CountdownEvent& event : countdown.step(
                 start + quarter * std::chrono::milliseconds(250), {true, false, true})) {
            if (event.kind == CountdownEventKind::cue) sounder.tick();
        }
    }
    const Lines lines = log.lines();
    EXPECT_EQ(Lines(lines.begin() + static_cast<std::ptrdiff_t>(linesBefore), lines.end()),
              Lines{"sound: tick (muted)"});
}

// Records which sounds a sounder asked for, in order.
struct PlayedNames {
    std::vector<std::string> names;
    PlaySound player() {
        return [this](const std::string& name) { names.push_back(name); };
    }
};

TEST(SystemSounder, UrgentIsIndistinguishableFromAlarm) {
    PlayedNames alarm;
    PlayedNames urgent;
    SystemSounder alarmSounder(alarm.player());
    SystemSounder urgentSounder(urgent.player());
    alarmSounder.alarm();
    urgentSounder.urgent();
    EXPECT_EQ(alarm.names, std::vector<std::string>{"Sosumi"});
    EXPECT_EQ(urgent.names, alarm.names);
}

TEST(SystemSounder, TickPlaysTink) {
    PlayedNames played;
    SystemSounder sounder(played.player());
    sounder.tick();
    EXPECT_EQ(played.names, std::vector<std::string>{"Tink"});
}

TEST(NamedCueSounder, EveryCuePlaysAfreshEvenWhileAnotherPlays) {
    PlayedNames played;
    NamedCueSounder sounder({.alarm = "alarm", .tick = "tick"}, played.player());
    sounder.alarm();
    sounder.tick();
    sounder.alarm();
    EXPECT_EQ(played.names, (std::vector<std::string>{"alarm", "tick", "alarm"}));
}

TEST(NamedCueSounder, WithoutAPlayerStaysSilent) {
    NamedCueSounder sounder({.alarm = "alarm", .tick = "tick"}, nullptr);
    // An empty player called would throw std::bad_function_call.
    EXPECT_NO_THROW({
        sounder.alarm();
        sounder.urgent();
        sounder.tick();
    });
}

}  // namespace
}  // namespace velmora
