#include <gtest/gtest.h>

#include <sys/socket.h>
#include <sys/un.h>
#include <syslog.h>
#include <unistd.h>

#include <array>
#include <chrono>
#include <cstdlib>
#include <filesystem>
#include <nlohmann/json.hpp>
#include <string>

#include "app/linux/journal_mirror.hpp"
#include "app/linux/systemd_notifier.hpp"
#include "support/temp_dir.hpp"

namespace velmora {
namespace {

/// A datagram socket standing in for systemd's notification socket.
class NotifySocket {
  public:
    NotifySocket() {
        fd_ = ::socket(AF_UNIX, SOCK_DGRAM | SOCK_CLOEXEC | SOCK_NONBLOCK, 0);
        sockaddr_un address{};
        address.sun_family = AF_UNIX;
        path_.native().copy(address.sun_path, sizeof address.sun_path - 1);
        ::bind(fd_, reinterpret_cast<const sockaddr*>(&address), sizeof address);
        ::setenv("NOTIFY_SOCKET", path_.c_str(), 1);
    }
    ~NotifySocket() {
        ::unsetenv("NOTIFY_SOCKET");
        ::close(fd_);
    }
    NotifySocket(const NotifySocket&) = delete;
    NotifySocket& operator=(const NotifySocket&) = delete;

    /// The next message, or "" when none is waiting.
    std::string next() const {
        std::array<char, 4096> buffer{};
        const ssize_t n = ::recv(fd_, buffer.data(), buffer.size(), 0);
        return n > 0 ? std::string(buffer.data(), static_cast<std::size_t>(n)) : std::string();
    }

  private:
    testing::TempDir tmp_{"notify"};
    std::filesystem::path path_ = tmp_ / "socket";
    int fd_ = -1;
};

LiveInputs hot() {
    LiveInputs in;
    in.thermal = ThermalState::serious;
    in.cpuTemp = TempReading{96.4, "hwmon coretemp Package id 0"};
    return in;
}

nlohmann::json stage(const std::string& name) {
    return {{"stage", name}, {"state", "idle"}};
}

TEST(SystemdNotifier, IsReadyAfterTheFirstSampleAndReportsChangesOfStatusOnly) {
    NotifySocket socket;
    {
        SystemdNotifier notifier(std::nullopt);
        notifier.ticked(stage("EXTREME HEAT"));
        EXPECT_EQ(socket.next(), "");  // nothing before the first sample
        notifier.sampled(hot(), Timestamp::fromSeconds(1));
        EXPECT_EQ(socket.next(), "READY=1\nSTATUS=EXTREME HEAT · CPU 96 °C · thermal Serious");
        notifier.sampled(hot(), Timestamp::fromSeconds(2));
        EXPECT_EQ(socket.next(), "");
        notifier.ticked(stage("EMERGENCY"));
        EXPECT_EQ(socket.next(), "");  // no watchdog asked for
        notifier.sampled(hot(), Timestamp::fromSeconds(3));
        EXPECT_EQ(socket.next(), "STATUS=EMERGENCY · CPU 96 °C · thermal Serious");
    }
    EXPECT_EQ(socket.next(), "STOPPING=1");
}

TEST(SystemdNotifier, PingsTheWatchdogFromTicksOnceReadyAtAQuarterOfItsInterval) {
    NotifySocket socket;
    std::chrono::steady_clock::time_point now{std::chrono::seconds(50)};
    SystemdNotifier notifier(std::chrono::milliseconds(400), [&now] { return now; });
    notifier.ticked(stage("NORMAL"));
    EXPECT_EQ(socket.next(), "");  // not before READY=1
    notifier.sampled(LiveInputs{}, Timestamp::fromSeconds(1));
    EXPECT_EQ(socket.next(), "READY=1\nSTATUS=NORMAL · no temperature · thermal Nominal");
    notifier.ticked(stage("NORMAL"));
    EXPECT_EQ(socket.next(), "WATCHDOG=1");
    now += std::chrono::milliseconds(99);
    notifier.ticked(stage("NORMAL"));
    EXPECT_EQ(socket.next(), "");  // too soon
    now += std::chrono::milliseconds(1);
    notifier.ticked(stage("NORMAL"));
    EXPECT_EQ(socket.next(), "WATCHDOG=1");
    now += std::chrono::milliseconds(50);
    notifier.ticked(stage("NORMAL"));
    EXPECT_EQ(socket.next(), "");  // counted from the last ping
}

TEST(SystemdNotifier, ComesOnlyWithANotificationSocketAndTakesTheWatchdogInterval) {
    ::unsetenv("NOTIFY_SOCKET");
    EXPECT_EQ(SystemdNotifier::fromEnvironment(), nullptr);
    NotifySocket socket;
    ::setenv("WATCHDOG_USEC", "200000", 1);
    ::setenv("WATCHDOG_PID", std::to_string(::getpid()).c_str(), 1);
    auto notifier = SystemdNotifier::fromEnvironment();
    ::unsetenv("WATCHDOG_USEC");
    ::unsetenv("WATCHDOG_PID");
    ASSERT_NE(notifier, nullptr);
    notifier->sampled(LiveInputs{}, Timestamp::fromSeconds(1));
    socket.next();
    notifier->ticked(stage("NORMAL"));
    EXPECT_EQ(socket.next(), "WATCHDOG=1");
}

TEST(JournalPriority, WarnsOfTheEmergencyStageAndOfFailures) {
    EXPECT_EQ(journalPriority("stage: EXTREME HEAT -> EMERGENCY"), LOG_WARNING);
    EXPECT_EQ(journalPriority("ui: user shutdown failed: denied"), LOG_WARNING);
    EXPECT_EQ(journalPriority("metrics: could not write /x.prom: Permission denied"), LOG_WARNING);
    EXPECT_EQ(journalPriority("shutdown: PowerOff Error org.freedesktop.DBus.Error"), LOG_WARNING);
    EXPECT_EQ(journalPriority("live: hwmon: coretemp (3 temps)"), LOG_INFO);
    // The start-up description of the ladder and the launch switches are not emergencies.
    EXPECT_EQ(journalPriority("ladder map nominal=NORMAL critical=EMERGENCY (Stage B/C)"),
              LOG_INFO);
    EXPECT_EQ(journalPriority("launched (live readings; testEmergency=false)"), LOG_INFO);
}

TEST(JournalMirror, IsOnlyUsedWhenOutputGoesToTheJournal) {
    ::unsetenv("JOURNAL_STREAM");
    EXPECT_FALSE(journalMirrorFromEnvironment());
    ::setenv("JOURNAL_STREAM", "8:12345", 1);
    const auto mirror = journalMirrorFromEnvironment();
    ::unsetenv("JOURNAL_STREAM");
    ASSERT_TRUE(mirror);
    mirror("a line for a journal that may not be running: never an error");
}

}  // namespace
}  // namespace velmora
