#pragma once

#include <condition_variable>
#include <cstdint>
#include <deque>
#include <functional>
#include <future>
#include <memory>
#include <mutex>
#include <thread>
#include <type_traits>

namespace velmora {

/// One background thread that runs jobs in the order they were posted, so that slow file work
/// (a stalled disk, a long fsync) never holds up the thread that posted it. Destruction runs
/// what is still queued, then joins.
class SerialWorker {
  public:
    SerialWorker();
    ~SerialWorker();
    SerialWorker(const SerialWorker&) = delete;
    SerialWorker& operator=(const SerialWorker&) = delete;
    SerialWorker(SerialWorker&&) = delete;
    SerialWorker& operator=(SerialWorker&&) = delete;

    /// Queues `job`; any thread. Without a worker thread (none could be started) the job runs
    /// at once on the caller's thread rather than being lost.
    void post(std::function<void()> job);

    /// Queues `job` and returns a future of its result, for a caller that waits a bounded time.
    template <typename Job>
    auto submit(Job job) -> std::shared_future<std::invoke_result_t<Job>> {
        using Result = std::invoke_result_t<Job>;
        auto task = std::make_shared<std::packaged_task<Result()>>(std::move(job));
        std::shared_future<Result> result = task->get_future().share();
        post([task] { (*task)(); });
        return result;
    }

    /// Blocks until every job posted before this call has run.
    void settle();

  private:
    void run();

    std::mutex mutex_;
    std::condition_variable wake_;
    std::condition_variable done_;
    std::deque<std::function<void()>> queue_;
    std::uint64_t posted_ = 0;
    std::uint64_t finished_ = 0;
    bool stopping_ = false;
    std::thread thread_;
};

}  // namespace velmora
