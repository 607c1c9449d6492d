#pragma once

#include <atomic>
#include <chrono>
#include <cstdint>
#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "metrics/heat_collector.hpp"
#include "metrics/live_inputs.hpp"
#include "policy/mono_time.hpp"
#include "policy/sinks.hpp"
#include "policy/thermal_state.hpp"

namespace velmora {

/// One finished sample as the loop receives it.
struct LiveDelivery {
    LiveInputs inputs;
    /// The sensor summary of a freshly built collector, on its first sample only.
    std::string summary;
    /// What the readers had to say since the previous sample (sensors left out, rediscoveries).
    std::vector<std::string> notices;
    /// The thresholds behind the sample's thermal state, read on the sampler's thread.
    std::vector<ThermalLimit> limits;
    /// The sample's number since the sampler started, from 1, counting samples not posted.
    std::uint64_t sequence = 0;
};

/// Runs the collector on a thread of its own so that no read, discovery or rediscovery ever
/// blocks the loop that ticks the countdown. The loop asks for a sample once a second; the
/// finished sample is posted back. A single open or read that has not returned after
/// `hangAfter` (or a sample that takes `sampleLimit` in all) is abandoned: the
/// file is never opened again, the thread is left to its read, and a fresh collector starts on a
/// new thread, told the last thermal state so that a confirmed emergency stays confirmed. Until
/// then the loop goes on with the last sample, which stays valid for ten seconds.
class LiveSampler {
  public:
    using MakeCollector = std::function<std::unique_ptr<HeatCollector>()>;
    using Deliver = std::function<void(const LiveDelivery&)>;
    using Clock = std::function<MonoTime()>;

    static constexpr std::chrono::seconds hangAfter{2};
    static constexpr std::chrono::seconds sampleLimit{15};

    /// `post` must run work on the loop from any thread; `deliver` runs there.
    LiveSampler(MakeCollector make, Post post, Deliver deliver, LogSink log,
                Clock clock = &MonoTime::now);
    ~LiveSampler();
    LiveSampler(const LiveSampler&) = delete;
    LiveSampler& operator=(const LiveSampler&) = delete;
    LiveSampler(LiveSampler&&) = delete;
    LiveSampler& operator=(LiveSampler&&) = delete;

    /// Asks for the next sample, or replaces a collector whose sample hangs. Loop thread only.
    void request();
    /// From now on the thread also samples on its own every `interval`, on whole multiples of
    /// it on the monotonic clock (where the loop's timers fire too). Loop thread only.
    void sampleEvery(std::chrono::milliseconds interval);
    /// Replaces a collector whose sample hangs; true when it did. Loop thread only.
    bool replaceIfHung();
    /// From now on a sample is posted only when its number is a multiple of `samples`, unless
    /// its thermal state differs from the last posted one or it has notices: a loop with
    /// nothing to show each second wakes less often, and a change still arrives at once.
    void postEvery(int samples);
    /// Asks for a sample and waits at most `limit` for it (start-up only); the sample is also
    /// remembered as delivered. Nothing when it did not come in time: it is posted later.
    std::optional<LiveDelivery> awaitFirst(std::chrono::milliseconds limit);

    /// The thermal state of a sample received less than ten seconds ago.
    std::optional<ThermalState> currentThermal(MonoTime now) const;
    const std::optional<LiveInputs>& last() const { return last_; }
    /// How many collectors were abandoned because a read hung.
    int restarts() const { return restarts_; }

  private:
    struct Worker;

    void startWorker();
    void received(const LiveDelivery& delivery);
    void abandon(Worker& worker, const std::string& path);

    MakeCollector make_;
    Post post_;
    Deliver deliver_;
    LogSink log_;
    Clock clock_;
    std::shared_ptr<Worker> worker_;
    std::optional<std::chrono::milliseconds> every_;
    int postEvery_ = 1;
    std::shared_ptr<std::atomic<std::uint64_t>> sequence_ =
        std::make_shared<std::atomic<std::uint64_t>>(0);
    std::optional<LiveInputs> last_;
    std::optional<MonoTime> lastAt_;
    int restarts_ = 0;
    /// Posted deliveries hold this weakly: once the sampler is gone they do nothing.
    std::shared_ptr<LiveSampler*> self_ = std::make_shared<LiveSampler*>(this);
};

}  // namespace velmora
