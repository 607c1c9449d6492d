#pragma once

#include <condition_variable>
#include <mutex>
#include <thread>

#include "policy/duration.hpp"

namespace velmora {

/// Once the user has asked the process to end, a clean-up stuck on a stalled disk (a log
/// line, a marker flush, a settings read) must not keep it alive: unless it is destroyed
/// within `limit`, the process ends with `status` without further clean-up.
class ExitDeadline {
  public:
    ExitDeadline(Seconds limit, int status);
    ~ExitDeadline();
    ExitDeadline(const ExitDeadline&) = delete;
    ExitDeadline& operator=(const ExitDeadline&) = delete;
    ExitDeadline(ExitDeadline&&) = delete;
    ExitDeadline& operator=(ExitDeadline&&) = delete;

  private:
    std::mutex mutex_;
    std::condition_variable done_;
    bool finished_ = false;
    std::thread thread_;
};

}  // namespace velmora
