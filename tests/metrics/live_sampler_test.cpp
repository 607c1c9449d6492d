#include "metrics/live_sampler.hpp"

#include <gtest/gtest.h>

#include <atomic>
#include <chrono>
#include <condition_variable>
#include <cstdint>
#include <future>
#include <mutex>

#include "metrics/read_watch.hpp"
#include "support/manual_queue.hpp"

namespace velmora {
namespace {

using namespace std::chrono_literals;

/// What the fake backends of one test share: whether the next sample hangs, and its release;
/// how many samples were taken and whether one is hanging now, for the test to wait on.
struct Gate {
    std::atomic<bool> hangNext{false};
    std::promise<void> release;
    std::shared_future<void> released = release.get_future().share();
    std::atomic<int> built{0};
    std::atomic<int> assumedCritical{0};
    std::atomic<ThermalState> thermal{ThermalState::critical};

    void sampling() {
        changed([this] { ++samples_; });
    }
    void hanging() {
        changed([this] { hanging_ = true; });
    }
    int samples() {
        std::lock_guard lock(mutex_);
        return samples_;
    }
    /// Waits until `count` samples in all have begun; false after five seconds.
    bool awaitSamples(int count) {
        std::unique_lock lock(mutex_);
        return changed_.wait_for(lock, 5s, [&] { return samples_ >= count; });
    }
    /// Waits until a sample is inside its hanging read; false after five seconds.
    bool awaitHanging() {
        std::unique_lock lock(mutex_);
        return changed_.wait_for(lock, 5s, [&] { return hanging_; });
    }

  private:
    template <typename Change>
    void changed(Change change) {
        {
            std::lock_guard lock(mutex_);
            change();
        }
        changed_.notify_all();
    }

    std::mutex mutex_;
    std::condition_variable changed_;
    int samples_ = 0;
    bool hanging_ = false;
};

class HangingBackend final : public MetricsBackend {
  public:
    explicit HangingBackend(std::shared_ptr<Gate> gate) : gate_(std::move(gate)) {}
    void prime(Timestamp /*now*/) override {}
    LiveInputs sample(Timestamp /*now*/) override {
        gate_->sampling();
        if (gate_->hangNext.exchange(false)) {
            const ReadWatch::Scope reading(path_);
            gate_->hanging();
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

struct Rig {
    std::shared_ptr<Gate> gate = std::make_shared<Gate>();
    testing::ManualQueue loop;
    std::vector<std::string> lines;
    std::vector<LiveDelivery> delivered;
    std::unique_ptr<LiveSampler> sampler;

    /// The sampler's monotonic clock runs this far ahead of the real one: a test steps it past
    /// the hang limit instead of waiting for it.
    std::shared_ptr<std::atomic<std::int64_t>> aheadMs =
        std::make_shared<std::atomic<std::int64_t>>(0);

    Rig() {
        auto shared = gate;
        auto ahead = aheadMs;
        sampler = std::make_unique<LiveSampler>(
            [shared] {
                ++shared->built;
                return std::make_unique<HeatCollector>(std::make_unique<HangingBackend>(shared),
                                                       Timestamp::fromSeconds(0));
            },
            loop.post(), [this](const LiveDelivery& d) { delivered.push_back(d); },
            [this](const std::string& line) { lines.push_back(line); },
            [ahead] { return MonoTime::now() + std::chrono::milliseconds(ahead->load()); });
    }
    ~Rig() {
        gate->release.set_value();
        sampler.reset();
    }
    Rig(const Rig&) = delete;
    Rig& operator=(const Rig&) = delete;

    // Runs the posted work until something is delivered, for at most five seconds.
    bool awaitDelivery() {
        const auto until = std::chrono::steady_clock::now() + 5s;
        const std::size_t before = delivered.size();
        while (delivered.size() == before && std::chrono::steady_clock::now() < until) {
            loop.runNext(std::chrono::duration_cast<std::chrono::milliseconds>(
                until - std::chrono::steady_clock::now()));
        }
        return delivered.size() > before;
    }

    // Moves the sampler's clock on by `step`.
    void stepClock(std::chrono::milliseconds step) { *aheadMs += step.count(); }
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
    ASSERT_TRUE(rig.gate->awaitHanging());
    EXPECT_FALSE(rig.sampler->replaceIfHung());  // not yet
    rig.stepClock(LiveSampler::hangAfter + 1ms);
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
    ASSERT_TRUE(rig.gate->awaitHanging());
    rig.stepClock(LiveSampler::hangAfter + 1ms);
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
    // Once a third sample has begun, the two before it are finished and were not posted.
    ASSERT_TRUE(rig.gate->awaitSamples(rig.gate->samples() + 3));
    EXPECT_EQ(rig.loop.runAll(), 0);  // nothing changed, nothing posted
    rig.gate->thermal = ThermalState::nominal;
    ASSERT_TRUE(rig.awaitDelivery());
    EXPECT_EQ(rig.delivered.back().inputs.thermal, ThermalState::nominal);
    EXPECT_EQ(rig.sampler->currentThermal(MonoTime::now()), ThermalState::nominal);
}

}  // namespace
}  // namespace velmora
