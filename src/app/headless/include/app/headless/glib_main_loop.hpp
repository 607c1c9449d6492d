#pragma once

#include <glib.h>

#include <deque>
#include <functional>
#include <map>
#include <memory>
#include <mutex>
#include <vector>

#include "app/core/main_loop.hpp"

namespace velmora {

/// The main loop over GLib's default context: timers are timeout sources; posts go through an
/// inbox of the loop's own, read when its eventfd says so. `post` may be called from any
/// thread; everything else from the loop's own.
class GlibMainLoop final : public MainLoop {
  public:
    GlibMainLoop();
    ~GlibMainLoop() override;
    GlibMainLoop(const GlibMainLoop&) = delete;
    GlibMainLoop& operator=(const GlibMainLoop&) = delete;
    GlibMainLoop(GlibMainLoop&&) = delete;
    GlibMainLoop& operator=(GlibMainLoop&&) = delete;

    void post(std::function<void()> work) override;
    TimerId postAfter(Seconds delay, std::function<void()> work) override;
    /// Fires on whole multiples of `interval` on the monotonic clock, so that timers of related
    /// intervals share their wake-ups; the first run comes within one interval.
    TimerId startRepeating(Seconds interval, std::function<void()> work) override;
    void stop(TimerId id) override;
    MonoTime now() const override;
    Timestamp wallNow() const override;
    /// Background work may finish after the loop is gone (a detached probe at quit): its
    /// completion is then dropped instead of reaching a destroyed loop.
    Post poster() override;

    /// Runs until `quit`.
    void run();
    void quit();
    /// Ends the run on SIGINT, SIGTERM or SIGHUP instead of letting the signal kill the process.
    void quitOnTerminationSignals();

    /// Drops a one-shot timer that has fired; called by its own source.
    void forget(TimerId id);

    /// Runs what was posted; called by the inbox's source.
    void runPosted();

  private:
    TimerId addTimeout(Seconds span, bool repeating, std::function<void()> work);

    GMainContext* context_;
    GMainLoop* loop_;
    TimerId nextId_ = 0;
    std::map<TimerId, GSource*> timers_;
    std::vector<unsigned> signalSources_;

    // A post from another thread only writes the eventfd after it let go of the inbox: a
    // GLib idle source would wake the loop while still holding the context's lock, and the
    // loop would wake a second time to take it.
    std::mutex inboxMutex_;
    std::deque<std::function<void()>> inbox_;
    int inboxFd_ = -1;
    unsigned inboxSource_ = 0;

    struct Gate {
        std::mutex mutex;
        GlibMainLoop* loop = nullptr;
    };
    std::shared_ptr<Gate> gate_ = std::make_shared<Gate>();
};

}  // namespace velmora
