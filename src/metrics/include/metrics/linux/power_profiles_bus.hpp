#pragma once

#include <systemd/sd-bus.h>

#include <chrono>
#include <optional>
#include <string>

#include "metrics/linux/power_profiles.hpp"
#include "policy/mono_time.hpp"

namespace velmora {

/// power-profiles-daemon's public `ActiveProfile` property on the system bus, under its
/// current name (org.freedesktop.UPower.PowerProfiles) or its older one
/// (net.hadess.PowerProfiles). Read once, then kept current from its PropertiesChanged
/// signals: a sample costs one non-blocking read of the bus socket, never a call.
class PowerProfilesBus final : public PowerProfileSource {
  public:
    /// How long a missing or broken daemon is left alone before it is asked again.
    static constexpr std::chrono::seconds retryAfter{60};

    /// `address` is a D-Bus address; empty for the system bus.
    explicit PowerProfilesBus(std::string address = {});
    ~PowerProfilesBus() override;
    PowerProfilesBus(const PowerProfilesBus&) = delete;
    PowerProfilesBus& operator=(const PowerProfilesBus&) = delete;
    PowerProfilesBus(PowerProfilesBus&&) = delete;
    PowerProfilesBus& operator=(PowerProfilesBus&&) = delete;

    std::optional<std::string> activeProfile() override;

  private:
    static int onPropertiesChanged(sd_bus_message* message, void* self, sd_bus_error* error);
    bool open();
    bool subscribe();
    void drainSignals();
    void close();

    std::string address_;
    sd_bus* bus_ = nullptr;
    sd_bus_slot* slot_ = nullptr;
    std::optional<std::string> profile_;
    /// The last attempt to find the daemon; nothing before the first.
    std::optional<MonoTime> triedAt_;
};

}  // namespace velmora
