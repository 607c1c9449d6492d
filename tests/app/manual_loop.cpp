#include "app/manual_loop.hpp"

#include <algorithm>

namespace velmora::testing {

void ManualLoop::post(std::function<void()> work) {
    schedule(Seconds::zero(), Seconds::zero(), std::move(work));
}

TimerId ManualLoop::postAfter(Seconds delay, std::function<void()> work) {
    return schedule(delay, Seconds::zero(), std::move(work));
}

TimerId ManualLoop::startRepeating(Seconds interval, std::function<void()> work) {
    return schedule(interval, interval, std::move(work));
}

void ManualLoop::stop(TimerId id) {
    std::lock_guard lock(mutex_);
    std::erase_if(queue_, [id](const auto& item) { return item.second.id == id; });
}

MonoTime ManualLoop::now() const {
    std::lock_guard lock(mutex_);
    return now_;
}

Timestamp ManualLoop::wallNow() const {
    std::lock_guard lock(mutex_);
    return Timestamp::fromSeconds((now_.sinceOrigin + wallOffset_).count());
}

void ManualLoop::stepWallClock(Seconds step) {
    std::lock_guard lock(mutex_);
    wallOffset_ += step;
}

std::size_t ManualLoop::pending() const {
    std::lock_guard lock(mutex_);
    return queue_.size();
}

bool ManualLoop::isScheduled(TimerId id) const {
    std::lock_guard lock(mutex_);
    return std::any_of(queue_.begin(), queue_.end(),
                       [id](const auto& item) { return item.second.id == id; });
}

TimerId ManualLoop::schedule(Seconds delay, Seconds interval, std::function<void()> work) {
    std::lock_guard lock(mutex_);
    const TimerId id = ++sequence_;
    queue_.emplace(Key{now_ + delay, id}, Entry{id, interval, std::move(work)});
    return id;
}

bool ManualLoop::popDue(MonoTime until, Entry& entry) {
    std::lock_guard lock(mutex_);
    if (queue_.empty() || std::get<0>(queue_.begin()->first) > until) return false;
    auto node = queue_.extract(queue_.begin());
    now_ = std::max(now_, std::get<0>(node.key()));
    entry = std::move(node.mapped());
    if (entry.interval > Seconds::zero()) {
        // Re-arm before running so that the work may stop its own timer.
        queue_.emplace(Key{now_ + entry.interval, ++sequence_},
                       Entry{entry.id, entry.interval, entry.work});
    }
    return true;
}

void ManualLoop::advance(Seconds span) {
    const MonoTime until = now() + span;
    Entry entry{0, Seconds::zero(), {}};
    while (popDue(until, entry))
        entry.work();
    std::lock_guard lock(mutex_);
    now_ = until;
}

}  // namespace velmora::testing
