#include "app/headless/glib_main_loop.hpp"

#include <glib-unix.h>
#include <glib.h>

#include <algorithm>
#include <chrono>
#include <cmath>
#include <csignal>
#include <cstdint>

#include <sys/eventfd.h>
#include <unistd.h>

namespace velmora {

namespace {

struct Work {
    GlibMainLoop* owner = nullptr;
    TimerId id = 0;
    bool repeating = false;
    std::function<void()> run;
};

gboolean runInbox(gint fd, GIOCondition /*condition*/, gpointer data) {
    std::uint64_t count = 0;
    static_cast<void>(read(fd, &count, sizeof count));  // resets the counter
    static_cast<GlibMainLoop*>(data)->runPosted();
    return G_SOURCE_CONTINUE;
}

gboolean runTimer(gpointer data) {
    auto* work = static_cast<Work*>(data);
    const bool repeating = work->repeating;
    if (!repeating) work->owner->forget(work->id);
    work->run();
    return repeating ? G_SOURCE_CONTINUE : G_SOURCE_REMOVE;
}

void deleteWork(gpointer data) {
    delete static_cast<Work*>(data);
}

gboolean quitLoop(gpointer data) {
    static_cast<GlibMainLoop*>(data)->quit();
    return G_SOURCE_CONTINUE;
}

// A repeating timer that fires on whole multiples of its interval on the monotonic clock, so
// that timers whose intervals divide each other (the 0.25 s tick, the 1 s sample) fire in the
// same wake-up of the loop instead of each waking it on its own.
struct AlignedTimer {
    GSource source;
    gint64 intervalMicroseconds;
};

gint64 nextMultiple(gint64 now, gint64 interval) {
    return (now / interval + 1) * interval;
}

gboolean dispatchAligned(GSource* source, GSourceFunc callback, gpointer data) {
    const gboolean keep = callback(data);
    if (keep != FALSE) {
        const auto* timer = reinterpret_cast<AlignedTimer*>(source);
        g_source_set_ready_time(source,
                                nextMultiple(g_get_monotonic_time(), timer->intervalMicroseconds));
    }
    return keep;
}

GSourceFuncs alignedTimerFuncs{nullptr, nullptr, dispatchAligned, nullptr, nullptr, nullptr};

GSource* alignedTimerSource(Seconds span) {
    const auto interval = std::max<gint64>(
        1000, std::llround(std::chrono::duration<double, std::micro>(span).count()));
    GSource* source = g_source_new(&alignedTimerFuncs, sizeof(AlignedTimer));
    reinterpret_cast<AlignedTimer*>(source)->intervalMicroseconds = interval;
    g_source_set_ready_time(source, nextMultiple(g_get_monotonic_time(), interval));
    return source;
}

guint milliseconds(Seconds span) {
    if (!(span > Seconds::zero())) return 0;
    return static_cast<guint>(std::lround(std::chrono::duration<double, std::milli>(span).count()));
}

}  // namespace

GlibMainLoop::GlibMainLoop()
    : context_(g_main_context_default()),
      loop_(g_main_loop_new(context_, FALSE)),
      inboxFd_(eventfd(0, EFD_CLOEXEC | EFD_NONBLOCK)) {
    inboxSource_ = g_unix_fd_add(inboxFd_, G_IO_IN, runInbox, this);
    gate_->loop = this;
}

GlibMainLoop::~GlibMainLoop() {
    {
        std::lock_guard lock(gate_->mutex);
        gate_->loop = nullptr;
    }
    for (const auto& [id, source] : timers_) {
        g_source_destroy(source);
        g_source_unref(source);
    }
    for (const auto source : signalSources_)
        g_source_remove(source);
    g_source_remove(inboxSource_);
    close(inboxFd_);
    g_main_loop_unref(loop_);
}

void GlibMainLoop::post(std::function<void()> work) {
    bool wasEmpty = false;
    {
        std::lock_guard lock(inboxMutex_);
        wasEmpty = inbox_.empty();
        inbox_.push_back(std::move(work));
    }
    if (!wasEmpty) return;  // the loop was told already and has not read the inbox yet
    const std::uint64_t one = 1;
    static_cast<void>(write(inboxFd_, &one, sizeof one));
}

void GlibMainLoop::runPosted() {
    std::deque<std::function<void()>> due;
    {
        std::lock_guard lock(inboxMutex_);
        due.swap(inbox_);
    }
    for (auto& work : due)
        work();
}

Post GlibMainLoop::poster() {
    return [gate = gate_](std::function<void()> work) {
        std::lock_guard lock(gate->mutex);
        if (gate->loop != nullptr) gate->loop->post(std::move(work));
    };
}

TimerId GlibMainLoop::postAfter(Seconds delay, std::function<void()> work) {
    return addTimeout(delay, false, std::move(work));
}

TimerId GlibMainLoop::startRepeating(Seconds interval, std::function<void()> work) {
    return addTimeout(interval, true, std::move(work));
}

TimerId GlibMainLoop::addTimeout(Seconds span, bool repeating, std::function<void()> work) {
    const TimerId id = ++nextId_;
    GSource* source =
        repeating ? alignedTimerSource(span) : g_timeout_source_new(milliseconds(span));
    g_source_set_callback(source, runTimer, new Work{this, id, repeating, std::move(work)},
                          deleteWork);
    g_source_attach(source, context_);
    timers_.emplace(id, source);  // keeps the reference until stopped or done
    return id;
}

void GlibMainLoop::stop(TimerId id) {
    const auto found = timers_.find(id);
    if (found == timers_.end()) return;
    g_source_destroy(found->second);
    g_source_unref(found->second);
    timers_.erase(found);
}

void GlibMainLoop::forget(TimerId id) {
    const auto found = timers_.find(id);
    if (found == timers_.end()) return;
    g_source_unref(found->second);
    timers_.erase(found);
}

MonoTime GlibMainLoop::now() const {
    return MonoTime::now();
}

Timestamp GlibMainLoop::wallNow() const {
    return Timestamp::now();
}

void GlibMainLoop::run() {
    g_main_loop_run(loop_);
}

void GlibMainLoop::quit() {
    g_main_loop_quit(loop_);
}

void GlibMainLoop::quitOnTerminationSignals() {
    for (const int signal : {SIGINT, SIGTERM, SIGHUP}) {
        signalSources_.push_back(g_unix_signal_add(signal, quitLoop, this));
    }
}

}  // namespace velmora
