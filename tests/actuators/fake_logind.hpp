#pragma once

#include <systemd/sd-bus.h>

#include <atomic>
#include <mutex>
#include <string>
#include <thread>
#include <utility>
#include <vector>

namespace velmora::testing {

/// What the fake answers.
struct FakeLogindScript {
    /// CanPowerOff's answer: "yes", "no", "challenge", "na".
    std::string canPowerOff = "yes";
    enum class PowerOff {
        succeed,  // reply at once
        refuse,   // reply with the error below
        ignore,   // never reply
        hold,     // reply only once `release` was called
    };
    PowerOff powerOff = PowerOff::succeed;
    std::string errorName;
    std::string errorMessage;

    static FakeLogindScript answering(std::string canPowerOff) {
        FakeLogindScript script;
        script.canPowerOff = std::move(canPowerOff);
        return script;
    }
    static FakeLogindScript poweringOff(PowerOff behaviour) {
        FakeLogindScript script;
        script.powerOff = behaviour;
        return script;
    }
    static FakeLogindScript refusing(std::string name, std::string message) {
        FakeLogindScript script = poweringOff(PowerOff::refuse);
        script.errorName = std::move(name);
        script.errorMessage = std::move(message);
        return script;
    }
};

/// A stand-in for systemd-logind: owns "org.freedesktop.login1" on the given bus and serves
/// the manager's CanPowerOff and PowerOff from its own thread.
class FakeLogind {
  public:
    FakeLogind(const std::string& busAddress, FakeLogindScript script);
    ~FakeLogind();
    FakeLogind(const FakeLogind&) = delete;
    FakeLogind& operator=(const FakeLogind&) = delete;

    /// Empty once it is on the bus; otherwise what went wrong.
    const std::string& problem() const { return problem_; }
    /// The `interactive` argument of every PowerOff call so far.
    std::vector<bool> powerOffCalls();
    /// From now on, answers held PowerOff calls, and any later one, with success.
    void release() { released_ = true; }

  private:
    static int onCanPowerOff(sd_bus_message* call, void* self, sd_bus_error* error);
    static int onPowerOff(sd_bus_message* call, void* self, sd_bus_error* error);
    bool connect(const std::string& busAddress);
    void serve();
    void answerHeld();

    FakeLogindScript script_;
    std::string problem_;
    sd_bus* bus_ = nullptr;
    sd_bus_slot* slot_ = nullptr;
    std::mutex mutex_;
    std::vector<bool> powerOffCalls_;
    std::vector<sd_bus_message*> held_;
    std::atomic<bool> stop_{false};
    std::atomic<bool> released_{false};
    std::thread thread_;
};

}  // namespace velmora::testing
