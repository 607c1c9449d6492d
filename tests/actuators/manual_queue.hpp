#pragma once

#include <chrono>
#include <condition_variable>
#include <deque>
#include <functional>
#include <mutex>

#include "policy/sinks.hpp"

namespace velmora::testing {

/// Stands in for the owner's main loop: work posted from any thread waits here until the test
/// thread runs it.
class ManualQueue {
  public:
    Post post() {
        return [this](std::function<void()> work) {
            const std::lock_guard lock(mutex_);
            pending_.push_back(std::move(work));
            arrived_.notify_all();
        };
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

    std::size_t size() {
        const std::lock_guard lock(mutex_);
        return pending_.size();
    }

  private:
    std::mutex mutex_;
    std::condition_variable arrived_;
    std::deque<std::function<void()>> pending_;
};

}  // namespace velmora::testing
