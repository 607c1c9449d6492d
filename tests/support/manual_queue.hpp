#pragma once

#include <chrono>
#include <condition_variable>
#include <cstddef>
#include <deque>
#include <functional>
#include <mutex>

#include "policy/sinks.hpp"

namespace velmora::testing {

/// Stands in for the owner's main loop: work posted here, from any thread, waits until the test
/// thread runs it.
class ManualQueue {
  public:
    /// A `Post` that queues work here, for the code under test.
    Post post() {
        return [this](std::function<void()> work) { post(std::move(work)); };
    }
    void post(std::function<void()> work) {
        const std::lock_guard lock(mutex_);
        pending_.push_back(std::move(work));
        arrived_.notify_all();
    }

    /// Runs the next posted piece of work on the calling thread; false when none arrived within
    /// `limit` (a generous bound that only a broken actuator ever reaches).
    bool runNext(std::chrono::milliseconds limit = std::chrono::seconds(10)) {
        std::unique_lock lock(mutex_);
        if (!arrived_.wait_for(lock, limit, [this] { return !pending_.empty(); })) return false;
        std::function<void()> work = std::move(pending_.front());
        pending_.pop_front();
        lock.unlock();
        work();
        return true;
    }

    /// Runs everything posted so far, and whatever that posts in turn, without waiting; how many
    /// pieces of work ran.
    int runAll() {
        int ran = 0;
        for (; size() > 0; ++ran)
            runNext();
        return ran;
    }

    [[nodiscard]] std::size_t size() const {
        const std::lock_guard lock(mutex_);
        return pending_.size();
    }

  private:
    mutable std::mutex mutex_;
    std::condition_variable arrived_;
    std::deque<std::function<void()>> pending_;
};

}  // namespace velmora::testing
