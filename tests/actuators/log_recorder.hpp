#pragma once

#include <mutex>
#include <string>
#include <vector>

#include "policy/sinks.hpp"

namespace velmora::testing {

/// Collects log lines written from any thread.
class LogRecorder {
  public:
    LogSink sink() {
        return [this](const std::string& line) {
            const std::lock_guard lock(mutex_);
            lines_.push_back(line);
        };
    }

    std::vector<std::string> lines() {
        const std::lock_guard lock(mutex_);
        return lines_;
    }

  private:
    std::mutex mutex_;
    std::vector<std::string> lines_;
};

}  // namespace velmora::testing
