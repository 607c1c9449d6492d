#include "os/serial_worker.hpp"

#include <system_error>

namespace velmora {

SerialWorker::SerialWorker() {
    try {
        thread_ = std::thread([this] { run(); });
    } catch (const std::system_error&) {
        // No thread: post() runs jobs on the caller's thread instead.
    }
}

SerialWorker::~SerialWorker() {
    {
        const std::lock_guard lock(mutex_);
        stopping_ = true;
    }
    wake_.notify_one();
    if (thread_.joinable()) thread_.join();
}

void SerialWorker::post(std::function<void()> job) {
    if (!thread_.joinable()) {
        job();
        return;
    }
    {
        const std::lock_guard lock(mutex_);
        queue_.push_back(std::move(job));
        ++posted_;
    }
    wake_.notify_one();
}

void SerialWorker::settle() {
    std::unique_lock lock(mutex_);
    const auto target = posted_;
    done_.wait(lock, [&] { return finished_ >= target; });
}

void SerialWorker::run() {
    std::unique_lock lock(mutex_);
    for (;;) {
        wake_.wait(lock, [this] { return stopping_ || !queue_.empty(); });
        if (queue_.empty()) return;  // stopping, and every job has run
        auto job = std::move(queue_.front());
        queue_.pop_front();
        lock.unlock();
        job();
        lock.lock();
        ++finished_;
        done_.notify_all();
    }
}

}  // namespace velmora
