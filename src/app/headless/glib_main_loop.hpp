#pragma once

#include <glib.h>

#include <map>
#include <vector>

#include "app/main_loop.hpp"

namespace velmora {

/// The main loop over GLib's default context: posts are idle sources, timers are timeout
/// sources. `post` may be called from any thread; everything else from the loop's own.
class GlibMainLoop final : public MainLoop {
  public:
    GlibMainLoop();
    ~GlibMainLoop() override;
    GlibMainLoop(const GlibMainLoop&) = delete;
    GlibMainLoop& operator=(const GlibMainLoop&) = delete;
    GlibMainLoop(GlibMainLoop&&) = delete;
    GlibMainLoop& operator=(GlibMainLoop&&) = delete;

    void post(std::function<void()> work) override;
    TimerId postAfter(double seconds, std::function<void()> work) override;
    TimerId startRepeating(double seconds, std::function<void()> work) override;
    void stop(TimerId id) override;
    Timestamp now() const override;

    /// Runs until `quit`.
    void run();
    void quit();
    /// Ends the run on SIGINT, SIGTERM or SIGHUP instead of letting the signal kill the process.
    void quitOnTerminationSignals();

    /// Drops a one-shot timer that has fired; called by its own source.
    void forget(TimerId id);

  private:
    TimerId addTimeout(double seconds, bool repeating, std::function<void()> work);

    GMainContext* context_;
    GMainLoop* loop_;
    TimerId nextId_ = 0;
    std::map<TimerId, GSource*> timers_;
    std::vector<unsigned> signalSources_;
};

}  // namespace velmora
