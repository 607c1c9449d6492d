#include "metrics/linux/power_profiles_bus.hpp"

#include <gtest/gtest.h>

#include <chrono>
#include <thread>

#include "actuators/private_bus.hpp"
#include "metrics/fake_power_profiles.hpp"
#include "metrics/fixture_tree.hpp"
#include "metrics/linux/linux_backend.hpp"

namespace velmora {
namespace {

using namespace std::chrono_literals;

using testing::FakePowerProfiles;
using testing::PrivateBus;

constexpr const char* kCurrentName = "org.freedesktop.UPower.PowerProfiles";
constexpr const char* kOlderName = "net.hadess.PowerProfiles";

/// Asks until the answer is `wanted` or a second has passed: a signal needs a moment to arrive.
std::optional<std::string> awaitProfile(PowerProfileSource& source, const std::string& wanted) {
    std::optional<std::string> profile;
    for (int i = 0; i < 100; ++i) {
        profile = source.activeProfile();
        if (profile == wanted) break;
        std::this_thread::sleep_for(std::chrono::milliseconds(10));
    }
    return profile;
}

class PowerProfilesTest : public ::testing::Test {
  protected:
    void SetUp() override {
        if (!bus_.problem().empty()) GTEST_SKIP() << "no private bus: " << bus_.problem();
    }
    PrivateBus bus_;
};

TEST_F(PowerProfilesTest, ReadsTheActiveProfileOnceAndFollowsItsChangeSignals) {
    FakePowerProfiles daemon(bus_.address(), kCurrentName, "balanced");
    ASSERT_EQ(daemon.problem(), "");
    PowerProfilesBus profiles(bus_.address());
    EXPECT_EQ(profiles.activeProfile(), "balanced");
    daemon.setProfile("power-saver");
    EXPECT_EQ(awaitProfile(profiles, "power-saver"), "power-saver");
    daemon.setProfile("performance");
    EXPECT_EQ(awaitProfile(profiles, "performance"), "performance");
    // One call at the start; every change after it came as a signal.
    EXPECT_EQ(daemon.getCalls(), 1);
}

TEST_F(PowerProfilesTest, AnswersUnderTheOlderBusNameToo) {
    FakePowerProfiles daemon(bus_.address(), kOlderName, "power-saver");
    ASSERT_EQ(daemon.problem(), "");
    PowerProfilesBus profiles(bus_.address());
    EXPECT_EQ(profiles.activeProfile(), "power-saver");
}

TEST_F(PowerProfilesTest, WithoutTheDaemonThereIsNoProfileAndNoRepeatedAsking) {
    PowerProfilesBus profiles(bus_.address());
    EXPECT_EQ(profiles.activeProfile(), std::nullopt);
    // A daemon that starts later is found at the next retry, not on every sample.
    FakePowerProfiles daemon(bus_.address(), kCurrentName, "power-saver");
    ASSERT_EQ(daemon.problem(), "");
    EXPECT_EQ(profiles.activeProfile(), std::nullopt);
    EXPECT_EQ(daemon.getCalls(), 0);
}

TEST_F(PowerProfilesTest, AnUnreachableBusGivesNothing) {
    PowerProfilesBus profiles("unix:path=/nonexistent/velmora-bus");
    EXPECT_EQ(profiles.activeProfile(), std::nullopt);
}

TEST_F(PowerProfilesTest, PowerSaverMeansLowPowerInTheLiveSample) {
    FakePowerProfiles daemon(bus_.address(), kCurrentName, "balanced");
    ASSERT_EQ(daemon.problem(), "");
    velmora::testing::FixtureTree tree("virtual_machine");
    LinuxBackend backend(tree.root());
    backend.setPowerProfiles(std::make_unique<PowerProfilesBus>(bus_.address()));
    const Timestamp start = Timestamp::fromSeconds(1'700'000'000);
    backend.prime(start);
    EXPECT_FALSE(backend.sample(start + 1s).lowPower);
    daemon.setProfile("power-saver");
    bool low = false;
    for (int i = 0; i < 100 && !low; ++i) {
        std::this_thread::sleep_for(std::chrono::milliseconds(10));
        low = backend.sample(start + std::chrono::seconds(2 + i)).lowPower;
    }
    EXPECT_TRUE(low);
}

}  // namespace
}  // namespace velmora
