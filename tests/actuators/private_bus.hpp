#pragma once

#include <sys/types.h>

#include <string>

namespace velmora::testing {

/// A dbus-daemon of the test's own, started with a permissive configuration and stopped when
/// this object goes away.
class PrivateBus {
  public:
    PrivateBus();
    ~PrivateBus();
    PrivateBus(const PrivateBus&) = delete;
    PrivateBus& operator=(const PrivateBus&) = delete;

    /// The address clients connect to; empty when the daemon could not start (see `problem`).
    const std::string& address() const { return address_; }
    const std::string& problem() const { return problem_; }

  private:
    pid_t pid_ = -1;
    std::string address_;
    std::string problem_;
};

}  // namespace velmora::testing
