#pragma once

#include <cstdint>
#include <functional>

#include "policy/duration.hpp"
#include "policy/mono_time.hpp"
#include "policy/sinks.hpp"
#include "policy/timestamp.hpp"

namespace velmora {

using TimerId = std::uint64_t;

/// The application's one thread of control: every timer, page message, menu action and
/// background completion runs on it, so the controller and the engine need no locks.
class MainLoop {
  public:
    virtual ~MainLoop() = default;

    /// Runs `work` on the loop soon; callable from any thread.
    virtual void post(std::function<void()> work) = 0;
    /// Runs `work` once on the loop after `delay`.
    virtual TimerId postAfter(Seconds delay, std::function<void()> work) = 0;
    /// Runs `work` on the loop every `interval` until stopped.
    virtual TimerId startRepeating(Seconds interval, std::function<void()> work) = 0;
    /// Stops a repeating timer or a delayed post that has not run yet; unknown ids are ignored.
    virtual void stop(TimerId id) = 0;
    /// The monotonic instant that every interval is measured by.
    virtual MonoTime now() const = 0;
    /// The wall clock, only for dates that people read or that are stored.
    virtual Timestamp wallNow() const = 0;

    /// This loop's `post` as a plain function, for components that deliver completions.
    virtual Post poster() {
        return [this](std::function<void()> work) { post(std::move(work)); };
    }
};

}  // namespace velmora
