#include "app/core/exit_deadline.hpp"

#include <unistd.h>

#include <chrono>
#include <string_view>
#include <system_error>

namespace velmora {

namespace {

constexpr std::string_view kGivingUp =
    "velmora-heat-monitor: quitting without waiting for a stalled file operation\n";

}  // namespace

ExitDeadline::ExitDeadline(Seconds limit, int status) {
    try {
        thread_ = std::thread([this, limit, status] {
            std::unique_lock lock(mutex_);
            if (done_.wait_for(lock, limit, [this] { return finished_; })) {
                return;
            }
            static_cast<void>(::write(STDERR_FILENO, kGivingUp.data(), kGivingUp.size()));
            ::_exit(status);
        });
    } catch (const std::system_error&) {
        // Without the thread the clean-up simply takes as long as it takes.
    }
}

ExitDeadline::~ExitDeadline() {
    {
        const std::lock_guard lock(mutex_);
        finished_ = true;
    }
    done_.notify_one();
    if (thread_.joinable()) thread_.join();
}

}  // namespace velmora
