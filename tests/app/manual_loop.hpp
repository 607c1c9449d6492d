#pragma once

#include <cstdint>
#include <functional>
#include <map>
#include <mutex>
#include <tuple>

#include "app/core/main_loop.hpp"

namespace velmora::testing {

/// A main loop on virtual time: nothing runs until the test advances the clock, and then
/// every due post and timer runs in time order, each at its own instant.
class ManualLoop final : public MainLoop {
  public:
    /// Monotonic and wall clock both start at `start` seconds; the wall clock can be stepped.
    explicit ManualLoop(double start = 1'800'000'000.0) : now_(MonoTime::fromSeconds(start)) {}

    void post(std::function<void()> work) override;
    TimerId postAfter(Seconds delay, std::function<void()> work) override;
    TimerId startRepeating(Seconds interval, std::function<void()> work) override;
    void stop(TimerId id) override;
    MonoTime now() const override;
    Timestamp wallNow() const override;
    /// Sets the wall clock forward (or back, when negative) without moving the monotonic one.
    void stepWallClock(Seconds step);

    /// Runs everything due within the next `span`, then sets the clock to the end.
    void advance(Seconds span);
    /// Runs what is due now (posts included) without moving the clock.
    void runDue() { advance(Seconds::zero()); }
    /// How many posts and timers are waiting.
    std::size_t pending() const;
    bool isScheduled(TimerId id) const;

  private:
    struct Entry {
        TimerId id;
        Seconds interval;  // zero for a one-shot
        std::function<void()> work;
    };
    /// Ordered by due time, then by scheduling order.
    using Key = std::tuple<MonoTime, std::uint64_t>;

    TimerId schedule(Seconds delay, Seconds interval, std::function<void()> work);
    bool popDue(MonoTime until, Entry& entry);

    mutable std::mutex mutex_;
    MonoTime now_;
    Seconds wallOffset_{};
    std::uint64_t sequence_ = 0;
    std::map<Key, Entry> queue_;
};

}  // namespace velmora::testing
