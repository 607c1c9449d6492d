#include <dirent.h>
#include <gtest/gtest.h>
#include <sys/resource.h>
#include <chrono>

#include <algorithm>
#include <string>

#include "metrics/fixture_tree.hpp"
#include "metrics/linux/file_pool.hpp"
#include "metrics/linux/hwmon.hpp"
#include "metrics/linux/linux_backend.hpp"

namespace velmora {
namespace {

using namespace std::chrono_literals;

using testing::FixtureTree;

constexpr Timestamp kStart = Timestamp::fromSeconds(1'700'000'000);

std::string chip(int n) {
    return "sys/class/hwmon/hwmon" + std::to_string(n) + "/";
}

void addChip(const FixtureTree& tree, int n, int millidegrees, bool emergency = false) {
    tree.write(chip(n) + "name", "nvme\n");
    tree.write(chip(n) + "temp1_input", std::to_string(millidegrees) + "\n");
    if (emergency) tree.write(chip(n) + "temp1_emergency", "110000\n");
}

int openDescriptors() {
    int count = 0;
    DIR* dir = ::opendir("/proc/self/fd");
    while (const dirent* entry = ::readdir(dir)) {
        if (entry->d_name[0] != '.') ++count;
    }
    ::closedir(dir);
    return count - 1;
}

bool noticed(LinuxBackend& backend, const std::string& text) {
    const auto notices = backend.takeNotices();
    return std::any_of(notices.begin(), notices.end(),
                       [&](const std::string& n) { return n.find(text) != std::string::npos; });
}

/// Lowers the soft descriptor limit for one test and restores it afterwards.
class SoftLimit {
  public:
    explicit SoftLimit(rlim_t soft) {
        ::getrlimit(RLIMIT_NOFILE, &saved_);
        rlimit lowered = saved_;
        lowered.rlim_cur = soft;
        ::setrlimit(RLIMIT_NOFILE, &lowered);
    }
    ~SoftLimit() { ::setrlimit(RLIMIT_NOFILE, &saved_); }
    SoftLimit(const SoftLimit&) = delete;
    SoftLimit& operator=(const SoftLimit&) = delete;

  private:
    rlimit saved_{};
};

TEST(LinuxRediscovery, AFailedReadWithNothingChangedKeepsTheInventory) {
    FixtureTree tree("");
    for (int n = 0; n < 20; ++n)
        addChip(tree, n, 40000 + n * 100);
    LinuxBackend backend(tree.root());
    backend.prime(kStart);
    tree.write(chip(3) + "temp1_input", "");  // fails from now on, in place
    backend.sample(kStart + 1s);
    backend.sample(kStart + 2s);
    backend.sample(kStart + 3s);
    EXPECT_EQ(backend.discoveries(), 1);
}

TEST(LinuxRediscovery, ANewDeviceIsFoundAndTheOpenDescriptorsAreReused) {
    FixtureTree tree("");
    for (int n = 0; n < 20; ++n)
        addChip(tree, n, 40000);
    LinuxBackend backend(tree.root());
    backend.prime(kStart);
    backend.sample(kStart + 1s);
    const int before = openDescriptors();
    addChip(tree, 20, 45000);
    EXPECT_TRUE(backend.rediscoverIfChanged(kStart + 2s));
    EXPECT_EQ(backend.discoveries(), 2);
    EXPECT_TRUE(
        noticed(backend, "21 temperature inputs and 0 fans open, 20 of them kept from before"));
    EXPECT_EQ(openDescriptors(), before + 1);
    EXPECT_FALSE(backend.rediscoverIfChanged(kStart + 3s));
}

// 300 inputs under a limit that could never hold two inventories of them: a rediscovery keeps
// every one and finds the new device.
TEST(LinuxRediscovery, RediscoveryNeverNeedsTwiceTheDescriptors) {
    FixtureTree tree("");
    constexpr int inputs = 300;
    for (int n = 0; n < inputs; ++n)
        addChip(tree, n, 40000);
    const auto soft = static_cast<rlim_t>(openDescriptors() + inputs +
                                          static_cast<int>(LinuxBackend::reservedDescriptors) + 20);
    const SoftLimit limit(soft);
    LinuxBackend backend(tree.root());
    backend.prime(kStart);
    EXPECT_EQ(backend.sample(kStart + 1s).sensors.size(), static_cast<std::size_t>(inputs));
    addChip(tree, inputs, 45000);
    tree.write(chip(0) + "temp1_input", "");
    backend.sample(kStart + 2s);
    const LiveInputs after = backend.sample(kStart + 3s);
    EXPECT_EQ(backend.discoveries(), 2);
    EXPECT_EQ(after.sensors.size(), static_cast<std::size_t>(inputs));  // one failed, one new
    EXPECT_FALSE(noticed(backend, "descriptor limit"));
}

TEST(LinuxRediscovery, TooFewDescriptorsKeepEmergencyLimitsAndTheHottestFirst) {
    FixtureTree tree("");
    for (int n = 0; n < 10; ++n)
        addChip(tree, n, 40000 + n * 1000);
    addChip(tree, 10, 30000, true);  // cool, but it has an emergency limit
    const HwmonInventory inventory = discoverHwmon(tree.root(), nullptr, 3);
    ASSERT_EQ(inventory.temps.size(), 3U);
    std::vector<std::string> kept;
    for (const HwmonTemp& temp : inventory.temps)
        kept.push_back(temp.input.path());
    EXPECT_EQ(kept, (std::vector<std::string>{tree.path(chip(8) + "temp1_input"),
                                              tree.path(chip(9) + "temp1_input"),
                                              tree.path(chip(10) + "temp1_input")}));
    EXPECT_EQ(inventory.leftOut.size(), 8U);
}

TEST(LinuxRediscovery, TheBackendSaysWhatItLeftOut) {
    FixtureTree tree("");
    constexpr int inputs = 200;
    for (int n = 0; n < inputs; ++n)
        addChip(tree, n, 40000);
    addChip(tree, inputs, 120000, true);
    const auto soft = static_cast<rlim_t>(openDescriptors() +
                                          static_cast<int>(LinuxBackend::reservedDescriptors) + 50);
    const SoftLimit limit(soft);
    LinuxBackend backend(tree.root());
    backend.prime(kStart);
    const LiveInputs first = backend.sample(kStart + 1s);
    EXPECT_LT(first.sensors.size(), static_cast<std::size_t>(inputs));
    EXPECT_EQ(first.sensors.front().celsius, 120.0);  // the emergency-limited one is kept
    EXPECT_TRUE(noticed(backend, "sensor inputs left out (kept "));
}

TEST(FilePool, ReplacedOrRemovedFilesAreClosedAndUnchangedOnesReused) {
    FixtureTree tree("");
    addChip(tree, 0, 40000);
    addChip(tree, 1, 41000);
    FilePool pool;
    pool.add(*SysfsFile::open(tree.path(chip(0) + "temp1_input")));
    pool.add(*SysfsFile::open(tree.path(chip(1) + "temp1_input")));
    std::filesystem::remove(tree.path(chip(1) + "temp1_input"));
    tree.write(chip(1) + "temp1_input", "42000\n");  // a new file under the old name
    pool.closeChanged();
    EXPECT_EQ(pool.size(), 1U);
    EXPECT_TRUE(pool.take(tree.path(chip(0) + "temp1_input")));
    EXPECT_FALSE(pool.take(tree.path(chip(1) + "temp1_input")));
    EXPECT_EQ(pool.reused(), 1U);
}

}  // namespace
}  // namespace velmora
