#pragma once

#include <functional>
#include <memory>
#include <optional>
#include <string>

#include "app/core/heat_notices.hpp"
#include "app/fleet/watchdog_observer.hpp"

namespace velmora {

/// Shows the watchdog's desktop notifications through the freedesktop notification service
/// (org.freedesktop.Notifications) on the session bus. `HeatNotices` decides; this only sends,
/// and every call is asynchronous, so that a missing, slow or failing server never holds up a
/// tick. Lives on the thread of the default GLib main context.
class DesktopNotifier final : public WatchdogObserver {
  public:
    struct Hooks {
        std::function<void(const std::string&)> log;
        /// Runs the same cancel as the emergency page's button.
        std::function<void()> cancelCountdown;
        /// The user's "Notify me when it gets hot", read when a rise may be told.
        std::function<bool()> risesWanted;
    };

    DesktopNotifier();
    ~DesktopNotifier() override;
    DesktopNotifier(const DesktopNotifier&) = delete;
    DesktopNotifier& operator=(const DesktopNotifier&) = delete;
    DesktopNotifier(DesktopNotifier&&) = delete;
    DesktopNotifier& operator=(DesktopNotifier&&) = delete;

    /// Replaces the hooks given so far with the ones set in `hooks`.
    void connect(Hooks hooks);

    void ticked(const nlohmann::json& view) override;
    void sampled(const LiveInputs& inputs, Timestamp now) override;
    bool followsEverySample() const override { return false; }

    struct State;

  private:
    std::shared_ptr<State> state_;
    HeatNotices rules_;
    std::optional<double> celsius_;
    /// The busiest process of the last sample, "cc1plus 96 %", from WARM up.
    std::optional<std::string> busiest_;
};

}  // namespace velmora
