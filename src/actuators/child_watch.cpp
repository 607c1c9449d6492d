#include "actuators/child_watch.hpp"

#include <sys/wait.h>

#include <algorithm>
#include <cerrno>
#include <cmath>
#include <condition_variable>
#include <csignal>
#include <memory>
#include <mutex>
#include <system_error>
#include <thread>

namespace velmora {
namespace {

using Clock = std::chrono::steady_clock;

struct Watch {
    std::mutex mutex;
    std::condition_variable ended;
    bool hasEnded = false;
    int status = -1;
};

int decodeStatus(int raw) {
    if (WIFEXITED(raw)) return WEXITSTATUS(raw);
    if (WIFSIGNALED(raw)) return -WTERMSIG(raw);
    return -1;
}

// Waits without reaping first, so that the pid cannot be reused while the waiting side may
// still signal it; the reaping then happens under the lock.
void watchUntilEnd(pid_t pid, const std::shared_ptr<Watch>& watch) {
    siginfo_t info{};
    int result = 0;
    do {
        result = ::waitid(P_PID, static_cast<id_t>(pid), &info, WEXITED | WNOWAIT);
    } while (result != 0 && errno == EINTR);
    const std::lock_guard lock(watch->mutex);
    int raw = 0;
    if (result == 0 && ::waitpid(pid, &raw, 0) == pid) watch->status = decodeStatus(raw);
    watch->hasEnded = true;
    watch->ended.notify_all();
}

Clock::time_point deadlineAfter(std::chrono::duration<double> timeout) {
    constexpr std::chrono::duration<double> longest = std::chrono::hours(24 * 365);
    const double seconds = std::isnan(timeout.count()) ? 0.0 : timeout.count();
    const std::chrono::duration<double> bounded{std::clamp(seconds, 0.0, longest.count())};
    return Clock::now() + std::chrono::duration_cast<Clock::duration>(bounded);
}

// Used only when no watching thread can be started: checks now and then until the deadline.
std::optional<int> pollForChild(pid_t pid, Clock::time_point deadline) {
    for (;;) {
        int raw = 0;
        const pid_t result = ::waitpid(pid, &raw, WNOHANG);
        if (result == pid) return decodeStatus(raw);
        if (result < 0 && errno != EINTR) return -1;
        if (Clock::now() >= deadline) {
            ::kill(pid, SIGTERM);
            return std::nullopt;
        }
        std::this_thread::sleep_for(std::chrono::milliseconds(10));
    }
}

}  // namespace

std::optional<int> waitForChild(pid_t pid, std::chrono::duration<double> timeout) {
    const Clock::time_point deadline = deadlineAfter(timeout);
    auto watch = std::make_shared<Watch>();
    try {
        std::thread(watchUntilEnd, pid, watch).detach();
    } catch (const std::system_error&) {
        return pollForChild(pid, deadline);
    }
    std::unique_lock lock(watch->mutex);
    if (watch->ended.wait_until(lock, deadline, [&] { return watch->hasEnded; })) {
        return watch->status;
    }
    ::kill(pid, SIGTERM);
    return std::nullopt;
}

}  // namespace velmora
