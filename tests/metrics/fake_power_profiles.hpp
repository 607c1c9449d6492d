#pragma once

#include <systemd/sd-bus.h>

#include <atomic>
#include <mutex>
#include <optional>
#include <string>
#include <thread>

namespace velmora::testing {

/// A stand-in for power-profiles-daemon: owns `service` on the given bus and serves the
/// read-only `ActiveProfile` property from its own thread, announcing every change with
/// PropertiesChanged as the daemon does.
class FakePowerProfiles {
  public:
    /// `service` is the bus name, which also gives the object path and interface.
    FakePowerProfiles(const std::string& busAddress, std::string service, std::string profile);
    ~FakePowerProfiles();
    FakePowerProfiles(const FakePowerProfiles&) = delete;
    FakePowerProfiles& operator=(const FakePowerProfiles&) = delete;

    const std::string& problem() const { return problem_; }
    /// Changes the profile and announces it.
    void setProfile(const std::string& profile);
    /// How many Properties.Get calls reached it (signals it sends are not counted).
    int getCalls() const { return getCalls_; }

  private:
    static int getProfile(sd_bus* bus, const char* path, const char* interface,
                          const char* property, sd_bus_message* reply, void* self,
                          sd_bus_error* error);
    static int countGets(sd_bus_message* message, void* self, sd_bus_error* error);
    bool connect(const std::string& busAddress);
    void serve();

    std::string service_;
    std::string path_;
    std::string problem_;
    sd_bus* bus_ = nullptr;
    sd_bus_slot* slot_ = nullptr;
    std::mutex mutex_;
    std::string profile_;
    std::optional<std::string> pending_;
    std::atomic<int> getCalls_{0};
    std::atomic<bool> stop_{false};
    std::thread thread_;
};

}  // namespace velmora::testing
