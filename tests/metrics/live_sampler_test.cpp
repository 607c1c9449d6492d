#include "metrics/live_sampler.hpp"

#include <gtest/gtest.h>

#include <atomic>
#include <chrono>
#include <deque>
#include <future>
#include <mutex>
#include <thread>

#include "metrics/read_watch.hpp"

namespace velmora {
namespace {

using namespace std::chrono_literals;

/// What the fake backends of one test share: whether the next sample hangs, and its release.
struct Gate {
    std::atomic<bool> hangNext{false};
    std::promise<void> release;
    std::shared_future<void> released = release.get_future().share();
    std::atomic<int> built{0};
    std::atomic<int> assumedCritical{0};
    std::atomic<ThermalState> thermal{ThermalState::critical};
};

class HangingBackend final : public MetricsBackend {
  public:
    explicit HangingBackend(std::shared_ptr<Gate> gate) : gate_(std::move(gate)) {}
    void prime(Timestamp /*now*/) override {}
    LiveInputs sample(Timestamp /*now*/) override {
        if (gate_->hangNext.exchange(false)) {
            const ReadWatch::Scope reading(path_);
            gate_->released.wait();
        }
        LiveInputs in;
        in.thermal = gate_->thermal;
        return in;
    }
    std::string sensorSummary() override { return "fake sensors"; }
    MetricSources sources() const override { return {}; }
    void assumeThermal(ThermalState previous) override {
        if (previous == ThermalState::critical) ++gate_->assumedCritical;
    }

  private:
    std::shared_ptr<Gate> gate_;
    std::string path_ = "/sys/class/hwmon/hwmon7/temp1_input";
};

/// Work posted from the sampling thread, run by the test as its loop.
class PostedWork {
  public:
    Post poster() {
        return [this](std::function<void()> work) {
            std::lock_guard lock(mutex_);
            work_.push_back(std::move(work));
        };
    }
    int runAll() {
        std::deque<std::function<void()>> due;
        {
            std::lock_guard lock(mutex_);
            due.swap(work_);
        }
        for (auto& work : due)
            work();
        return static_cast<int>(due.size());
    }

  private:
    std::mutex mutex_;
    std::deque<std::function<void()>> work_;
};

struct Rig {
    std::shared_ptr<Gate> gate = std::make_shared<Gate>();
    PostedWork loop;
    std::vector<std::string> lines;
    std::vector<LiveDelivery> delivered;
    std::unique_ptr<LiveSampler> sampler;

    Rig() {
        auto shared = gate;
        sampler = std::make_unique<LiveSampler>(
            [shared] {
                ++shared->built;
                return std::make_unique<HeatCollector>(std::make_unique<HangingBackend>(shared),
                                                       Timestamp::fromSeconds(0));
            },
            loop.poster(), [this](const LiveDelivery& d) { delivered.push_back(d); },
            [this](const std::string& line) { lines.push_back(line); });
    }
    ~Rig() {
        gate->release.set_value();
        sampler.reset();
    }
    Rig(const Rig&) = delete;
    Rig& operator=(const Rig&) = delete;

    // Runs the posted work until something is delivered, for at most two seconds.
    bool awaitDelivery() {
        const auto until = std::chrono::steady_clock::now() + 2s;
        const std::size_t before = delivered.size();
        while (delivered.size() == before && std::chrono::steady_clock::now() < until) {
            loop.runAll();
            std::this_thread::sleep_for(10ms);
        }
        return delivered.size() > before;
    }
};

TEST(LiveSampler, TheFirstSampleComesWithTheSummary) {
    Rig rig;
    const auto first = rig.sampler->awaitFirst(2s);
    ASSERT_TRUE(first.has_value());
    EXPECT_EQ(first->summary, "fake sensors");
    EXPECT_EQ(rig.sampler->currentThermal(MonoTime::now()), ThermalState::critical);
    rig.sampler->request();
    ASSERT_TRUE(rig.awaitDelivery());
    EXPECT_TRUE(rig.delivered.back().summary.empty());
}

TEST(LiveSampler, ASampleOlderThanTenSecondsSaysNothing) {
    Rig rig;
    ASSERT_TRUE(rig.sampler->awaitFirst(2s).has_value());
    EXPECT_EQ(rig.sampler->currentThermal(MonoTime::now() + 9900ms), ThermalState::critical);
    EXPECT_EQ(rig.sampler->currentThermal(MonoTime::now() + 10100ms), std::nullopt);
}

TEST(LiveSampler, AHungReadIsAbandonedAndSamplingGoesOnWithoutIt) {
    Rig rig;
    ASSERT_TRUE(rig.sampler->awaitFirst(2s).has_value());
    rig.gate->hangNext = true;
    rig.sampler->request();  // this sample hangs in its read
    std::this_thread::sleep_for(LiveSampler::hangAfter + 300ms);
    EXPECT_EQ(rig.loop.runAll(), 0);  // nothing came back
    // The last sample still holds while the hung one is given up.
    EXPECT_EQ(rig.sampler->currentThermal(MonoTime::now()), ThermalState::critical);
    rig.sampler->request();
    EXPECT_EQ(rig.sampler->restarts(), 1);
    ASSERT_EQ(rig.lines.size(), 1U);
    EXPECT_EQ(rig.lines[0],
              "live: reading /sys/class/hwmon/hwmon7/temp1_input has not answered for 2 s or "
              "more; it is left behind (stale) and sampling starts afresh without it");
    EXPECT_TRUE(readQuarantined("/sys/class/hwmon/hwmon7/temp1_input"));
    ASSERT_TRUE(rig.awaitDelivery());
    EXPECT_EQ(rig.gate->built, 2);
    EXPECT_EQ(rig.gate->assumedCritical, 1);  // the confirmed emergency stays confirmed
    EXPECT_EQ(rig.delivered.back().summary, "fake sensors");
}

TEST(LiveSampler, ASlowButAnsweringSampleIsNotAbandoned) {
    Rig rig;
    ASSERT_TRUE(rig.sampler->awaitFirst(2s).has_value());
    rig.sampler->request();
    rig.sampler->request();
    ASSERT_TRUE(rig.awaitDelivery());
    EXPECT_EQ(rig.sampler->restarts(), 0);
    EXPECT_TRUE(rig.lines.empty());
}

TEST(LiveSampler, OnItsOwnTimeItSamplesWithoutBeingAsked) {
    Rig rig;
    ASSERT_TRUE(rig.sampler->awaitFirst(2s).has_value());
    rig.sampler->sampleEvery(100ms);
    ASSERT_TRUE(rig.awaitDelivery());
    ASSERT_TRUE(rig.awaitDelivery());
    EXPECT_EQ(rig.sampler->restarts(), 0);
}

TEST(LiveSampler, OnItsOwnTimeAHungReadIsFoundByTheLoopAndTheNewThreadKeepsTheTime) {
    Rig rig;
    ASSERT_TRUE(rig.sampler->awaitFirst(2s).has_value());
    rig.gate->hangNext = true;
    rig.sampler->sampleEvery(100ms);  // its next sample hangs in its read
    std::this_thread::sleep_for(LiveSampler::hangAfter + 500ms);
    EXPECT_TRUE(rig.sampler->replaceIfHung());
    EXPECT_EQ(rig.sampler->restarts(), 1);
    rig.loop.runAll();
    const auto before = rig.delivered.size();
    // Nobody asks again: the fresh thread samples on its own.
    ASSERT_TRUE(rig.awaitDelivery());
    ASSERT_TRUE(rig.awaitDelivery());
    EXPECT_GE(rig.delivered.size(), before + 2);
    EXPECT_FALSE(rig.sampler->replaceIfHung());
}

TEST(LiveSampler, AQuietSamplerPostsOnlyEveryNthSample) {
    Rig rig;
    ASSERT_TRUE(rig.sampler->awaitFirst(2s).has_value());
    rig.sampler->postEvery(3);
    rig.sampler->sampleEvery(20ms);
    for (int i = 0; i < 3; ++i)
        ASSERT_TRUE(rig.awaitDelivery());
    for (const auto& delivery : rig.delivered)
        EXPECT_EQ(delivery.sequence % 3, 0U) << delivery.sequence;
    EXPECT_EQ(rig.delivered[1].sequence - rig.delivered[0].sequence, 3U);
}

TEST(LiveSampler, AQuietSamplerPostsAChangeOfTheThermalStateAtOnce) {
    Rig rig;
    ASSERT_TRUE(rig.sampler->awaitFirst(2s).has_value());
    rig.sampler->postEvery(1000000);
    rig.sampler->sampleEvery(20ms);
    std::this_thread::sleep_for(200ms);
    EXPECT_EQ(rig.loop.runAll(), 0);  // nothing changed, nothing posted
    rig.gate->thermal = ThermalState::nominal;
    ASSERT_TRUE(rig.awaitDelivery());
    EXPECT_EQ(rig.delivered.back().inputs.thermal, ThermalState::nominal);
    EXPECT_EQ(rig.sampler->currentThermal(MonoTime::now()), ThermalState::nominal);
}

}  // namespace
}  // namespace velmora
