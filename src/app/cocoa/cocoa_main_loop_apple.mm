#include "app/cocoa/cocoa_main_loop.hpp"

#include <CoreFoundation/CoreFoundation.h>
#include <dispatch/dispatch.h>

#include <algorithm>

namespace velmora {

namespace {

struct TimerWork {
    CocoaMainLoop* owner = nullptr;
    TimerId id = 0;
    bool repeating = false;
    std::function<void()> run;
};

void runPosted(void* context) {
    std::unique_ptr<std::function<void()>> work(static_cast<std::function<void()>*>(context));
    (*work)();
}

void fireTimer(CFRunLoopTimerRef /*timer*/, void* info) {
    auto* work = static_cast<TimerWork*>(info);
    // A copy: the body may stop its own timer, which releases `work`.
    const auto run = work->run;
    if (!work->repeating) work->owner->forget(work->id);
    run();
}

void releaseTimerWork(const void* info) {
    delete static_cast<const TimerWork*>(info);
}

CFRunLoopTimerRef timerRef(void* timer) {
    return static_cast<CFRunLoopTimerRef>(timer);
}

}  // namespace

CocoaMainLoop::CocoaMainLoop() {
    gate_->loop = this;
}

CocoaMainLoop::~CocoaMainLoop() {
    {
        std::lock_guard lock(gate_->mutex);
        gate_->loop = nullptr;
    }
    for (const auto& [id, timer] : timers_) {
        CFRunLoopTimerInvalidate(timerRef(timer));
        CFRelease(timerRef(timer));
    }
}

void CocoaMainLoop::post(std::function<void()> work) {
    dispatch_async_f(dispatch_get_main_queue(), new std::function<void()>(std::move(work)),
                     runPosted);
}

Post CocoaMainLoop::poster() {
    return [gate = gate_](std::function<void()> work) {
        std::lock_guard lock(gate->mutex);
        if (gate->loop != nullptr) gate->loop->post(std::move(work));
    };
}

TimerId CocoaMainLoop::postAfter(Seconds delay, std::function<void()> work) {
    return addTimer(delay, false, std::move(work));
}

TimerId CocoaMainLoop::startRepeating(Seconds interval, std::function<void()> work) {
    return addTimer(interval, true, std::move(work));
}

TimerId CocoaMainLoop::addTimer(Seconds span, bool repeating, std::function<void()> work) {
    const TimerId id = ++nextId_;
    // CFAbsoluteTime and CFTimeInterval are plain seconds.
    const double interval = std::max(span.count(), 0.0);
    CFRunLoopTimerContext context{};
    context.info = new TimerWork{this, id, repeating, std::move(work)};
    context.release = releaseTimerWork;
    CFRunLoopTimerRef timer =
        CFRunLoopTimerCreate(kCFAllocatorDefault, CFAbsoluteTimeGetCurrent() + interval,
                             repeating ? interval : 0, 0, 0, fireTimer, &context);
    // A little leeway lets the system group wake-ups; a tenth of the interval keeps every cue
    // of the countdown well inside its quarter second.
    CFRunLoopTimerSetTolerance(timer, interval / 10);
    CFRunLoopAddTimer(CFRunLoopGetMain(), timer, kCFRunLoopCommonModes);
    timers_.emplace(id, timer);
    return id;
}

void CocoaMainLoop::stop(TimerId id) {
    const auto found = timers_.find(id);
    if (found == timers_.end()) return;
    CFRunLoopTimerInvalidate(timerRef(found->second));
    CFRelease(timerRef(found->second));
    timers_.erase(found);
}

void CocoaMainLoop::forget(TimerId id) {
    const auto found = timers_.find(id);
    if (found == timers_.end()) return;
    CFRelease(timerRef(found->second));
    timers_.erase(found);
}

MonoTime CocoaMainLoop::now() const {
    return MonoTime::now();
}

Timestamp CocoaMainLoop::wallNow() const {
    return Timestamp::now();
}

}  // namespace velmora
