#pragma once

#include <map>
#include <memory>
#include <mutex>

#include "app/core/main_loop.hpp"

namespace velmora {

/// The main loop over the main thread's run loop: posts go to the main dispatch queue, timers
/// are run-loop timers in the common modes, so that they keep firing while a menu is open or
/// a sheet is up. `post` and `poster` may be called from any thread; the rest from the main
/// thread only.
class CocoaMainLoop final : public MainLoop {
  public:
    CocoaMainLoop();
    ~CocoaMainLoop() override;
    CocoaMainLoop(const CocoaMainLoop&) = delete;
    CocoaMainLoop& operator=(const CocoaMainLoop&) = delete;
    CocoaMainLoop(CocoaMainLoop&&) = delete;
    CocoaMainLoop& operator=(CocoaMainLoop&&) = delete;

    void post(std::function<void()> work) override;
    TimerId postAfter(Seconds delay, std::function<void()> work) override;
    TimerId startRepeating(Seconds interval, std::function<void()> work) override;
    void stop(TimerId id) override;
    MonoTime now() const override;
    Timestamp wallNow() const override;
    /// Completions of background work that ends after the loop is gone are dropped.
    Post poster() override;

    /// Drops a one-shot timer that has fired; called by the timer itself.
    void forget(TimerId id);

  private:
    TimerId addTimer(Seconds span, bool repeating, std::function<void()> work);

    TimerId nextId_ = 0;
    /// The run-loop timers, each held by one reference until stopped or fired.
    std::map<TimerId, void*> timers_;

    struct Gate {
        std::mutex mutex;
        CocoaMainLoop* loop = nullptr;
    };
    std::shared_ptr<Gate> gate_ = std::make_shared<Gate>();
};

}  // namespace velmora
