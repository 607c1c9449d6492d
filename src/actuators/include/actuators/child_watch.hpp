#pragma once

#include <sys/types.h>

#include <chrono>
#include <optional>

namespace velmora {

/// Waits at most `timeout` (monotonic clock) for the child `pid` to end and returns its status:
/// the exit code, or minus the signal number. At the deadline the child is sent SIGTERM and
/// nothing is returned; it is then reaped in the background whenever it ends.
std::optional<int> waitForChild(pid_t pid, std::chrono::duration<double> timeout);

}  // namespace velmora
