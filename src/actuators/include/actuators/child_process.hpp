#pragma once

#include <chrono>
#include <string>
#include <variant>
#include <vector>

namespace velmora {

/// The child ran to its end.
struct ChildExit {
    /// The exit code, or minus the signal number when a signal ended it.
    int status = 0;
    /// Its standard error as UTF-8 text; empty when the bytes were not valid UTF-8.
    std::string standardError;
};

/// The child was still running at the deadline; it was asked to terminate and left alone.
struct ChildTimedOut {};

/// The child could not be started; `reason` is the system's own description.
struct ChildNotStarted {
    std::string reason;
};

using ChildResult = std::variant<ChildExit, ChildTimedOut, ChildNotStarted>;

/// Starts `executable` (a path; no shell, no search) with `arguments` and waits for it at most
/// `timeout` on the monotonic clock. Standard error and output go to pipes that are read only
/// once the child has ended: the programs run here print a line at most. On time-out the child
/// gets SIGTERM and is neither waited for nor read; it is reaped in the background.
ChildResult runChild(const std::string& executable, const std::vector<std::string>& arguments,
                     std::chrono::duration<double> timeout);

}  // namespace velmora
