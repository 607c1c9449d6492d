#include "metrics/fake_power_profiles.hpp"

#include <algorithm>
#include <system_error>
#include <utility>

namespace velmora::testing {
namespace {

const sd_bus_vtable* profilesVtable(sd_bus_property_get_t getter) {
    static const sd_bus_vtable table[] = {
        SD_BUS_VTABLE_START(0),
        SD_BUS_PROPERTY("ActiveProfile", "s", getter, 0, SD_BUS_VTABLE_PROPERTY_EMITS_CHANGE),
        SD_BUS_VTABLE_END};
    return table;
}

}  // namespace

FakePowerProfiles::FakePowerProfiles(const std::string& busAddress, std::string service,
                                     std::string profile)
    : service_(std::move(service)), profile_(std::move(profile)) {
    path_ = "/" + service_;
    std::replace(path_.begin(), path_.end(), '.', '/');
    if (connect(busAddress)) thread_ = std::thread([this] { serve(); });
}

FakePowerProfiles::~FakePowerProfiles() {
    stop_ = true;
    if (thread_.joinable()) thread_.join();
    sd_bus_slot_unref(slot_);
    sd_bus_flush_close_unref(bus_);
}

bool FakePowerProfiles::connect(const std::string& busAddress) {
    int result = sd_bus_new(&bus_);
    if (result >= 0) result = sd_bus_set_address(bus_, busAddress.c_str());
    if (result >= 0) result = sd_bus_set_bus_client(bus_, 1);
    if (result >= 0) result = sd_bus_start(bus_);
    if (result >= 0) {
        result = sd_bus_add_object_vtable(bus_, &slot_, path_.c_str(), service_.c_str(),
                                          profilesVtable(&getProfile), this);
    }
    if (result >= 0) result = sd_bus_add_filter(bus_, nullptr, &countGets, this);
    if (result >= 0) result = sd_bus_request_name(bus_, service_.c_str(), 0);
    if (result < 0)
        problem_ = "fake power-profiles-daemon: " + std::generic_category().message(-result);
    return result >= 0;
}

void FakePowerProfiles::setProfile(const std::string& profile) {
    const std::lock_guard lock(mutex_);
    pending_ = profile;
}

void FakePowerProfiles::serve() {
    while (!stop_) {
        std::optional<std::string> change;
        {
            const std::lock_guard lock(mutex_);
            change.swap(pending_);
            if (change) profile_ = *change;
        }
        if (change) {
            sd_bus_emit_properties_changed(bus_, path_.c_str(), service_.c_str(), "ActiveProfile",
                                           nullptr);
        }
        const int result = sd_bus_process(bus_, nullptr);
        if (result < 0) return;
        if (result == 0) sd_bus_wait(bus_, 20000);
    }
}

int FakePowerProfiles::getProfile(sd_bus* /*bus*/, const char* /*path*/, const char* /*interface*/,
                                  const char* /*property*/, sd_bus_message* reply, void* self,
                                  sd_bus_error* /*error*/) {
    auto* fake = static_cast<FakePowerProfiles*>(self);
    std::string profile;
    {
        const std::lock_guard lock(fake->mutex_);
        profile = fake->profile_;
    }
    return sd_bus_message_append(reply, "s", profile.c_str());
}

int FakePowerProfiles::countGets(sd_bus_message* message, void* self, sd_bus_error* /*error*/) {
    if (sd_bus_message_is_method_call(message, "org.freedesktop.DBus.Properties", "Get") > 0) {
        ++static_cast<FakePowerProfiles*>(self)->getCalls_;
    }
    return 0;
}

}  // namespace velmora::testing
