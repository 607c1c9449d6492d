#pragma once

#include <chrono>
#include <functional>
#include <memory>
#include <optional>
#include <string>

#include "app/fleet/watchdog_observer.hpp"

namespace velmora {

/// Tells systemd how the service is doing (a Type=notify unit): READY=1 once the first sample
/// is taken, STATUS= with the level and temperature when they change, and WATCHDOG=1 from the
/// ticks themselves, so that a watchdog whose ticks stop is restarted.
class SystemdNotifier final : public WatchdogObserver {
  public:
    /// Nothing when the process was not started by systemd with a notification socket.
    static std::shared_ptr<SystemdNotifier> fromEnvironment();

    /// Where the keep-alive's intervals are measured: the steady clock, or a test's own.
    using Clock = std::function<std::chrono::steady_clock::time_point()>;

    explicit SystemdNotifier(std::optional<std::chrono::microseconds> watchdogInterval,
                             Clock clock = &std::chrono::steady_clock::now);
    /// Says that the service is stopping.
    ~SystemdNotifier() override;
    SystemdNotifier(const SystemdNotifier&) = delete;
    SystemdNotifier& operator=(const SystemdNotifier&) = delete;
    SystemdNotifier(SystemdNotifier&&) = delete;
    SystemdNotifier& operator=(SystemdNotifier&&) = delete;

    void ticked(const nlohmann::json& view) override;
    void sampled(const LiveInputs& inputs, Timestamp now) override;
    /// Its status line and keep-alive need a sample now and then, not each one.
    bool followsEverySample() const override { return false; }

  private:
    std::optional<std::chrono::microseconds> watchdogInterval_;
    Clock clock_;
    std::optional<std::chrono::steady_clock::time_point> lastPing_;
    std::string stage_ = "n/a";
    std::string status_;
    bool ready_ = false;
};

/// The service status line: "EMERGENCY · CPU 97 °C · thermal Critical".
std::string serviceStatusText(const std::string& stage, const LiveInputs& inputs);

}  // namespace velmora
