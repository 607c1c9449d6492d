#include "metrics/linux/power_profiles_bus.hpp"

#include <systemd/sd-bus.h>

#include <array>
#include <chrono>
#include <cstdlib>
#include <cstring>

namespace velmora {

namespace {

struct ProfileDaemon {
    const char* service;
    const char* path;
    const char* interface;
};

// The current name first; daemons before 0.20 answer only to the older one.
constexpr std::array<ProfileDaemon, 2> kDaemons{{
    {"org.freedesktop.UPower.PowerProfiles", "/org/freedesktop/UPower/PowerProfiles",
     "org.freedesktop.UPower.PowerProfiles"},
    {"net.hadess.PowerProfiles", "/net/hadess/PowerProfiles", "net.hadess.PowerProfiles"},
}};

// A missing daemon answers at once; a hung one must not hold a sample for long.
constexpr std::chrono::microseconds kCallTimeout{500'000};

std::optional<std::string> readProfile(sd_bus* bus, const ProfileDaemon& daemon) {
    sd_bus_error error = SD_BUS_ERROR_NULL;
    char* value = nullptr;
    const int result = sd_bus_get_property_string(
        bus, daemon.service, daemon.path, daemon.interface, "ActiveProfile", &error, &value);
    sd_bus_error_free(&error);
    if (result < 0 || !value) return std::nullopt;
    std::string profile(value);
    std::free(value);  // NOLINT(*-no-malloc): sd-bus hands out malloc'd text
    return profile;
}

// Reads "ActiveProfile" from the a{sv} of changed properties, leaving the message after it.
std::optional<std::string> changedProfile(sd_bus_message* message) {
    std::optional<std::string> found;
    if (sd_bus_message_enter_container(message, SD_BUS_TYPE_ARRAY, "{sv}") < 0) return found;
    while (sd_bus_message_enter_container(message, SD_BUS_TYPE_DICT_ENTRY, "sv") > 0) {
        const char* name = nullptr;
        if (sd_bus_message_read(message, "s", &name) < 0) break;
        const char* value = nullptr;
        if (name && std::strcmp(name, "ActiveProfile") == 0 &&
            sd_bus_message_read(message, "v", "s", &value) >= 0 && value) {
            found = value;
        } else if (sd_bus_message_skip(message, "v") < 0) {
            break;
        }
        sd_bus_message_exit_container(message);
    }
    return found;
}

}  // namespace

PowerProfilesBus::PowerProfilesBus(std::string address) : address_(std::move(address)) {}

PowerProfilesBus::~PowerProfilesBus() {
    close();
}

bool PowerProfilesBus::open() {
    if (bus_) return true;
    sd_bus* bus = nullptr;
    int result = 0;
    if (address_.empty()) {
        result = sd_bus_open_system(&bus);
    } else if ((result = sd_bus_new(&bus)) >= 0) {
        sd_bus_set_address(bus, address_.c_str());
        sd_bus_set_bus_client(bus, 1);
        result = sd_bus_start(bus);
    }
    if (result < 0) {
        sd_bus_unref(bus);
        return false;
    }
    bus_ = bus;
    sd_bus_set_method_call_timeout(bus_, static_cast<std::uint64_t>(kCallTimeout.count()));
    return true;
}

void PowerProfilesBus::close() {
    slot_ = sd_bus_slot_unref(slot_);
    bus_ = sd_bus_flush_close_unref(bus_);
    profile_.reset();
}

int PowerProfilesBus::onPropertiesChanged(sd_bus_message* message, void* self,
                                          sd_bus_error* /*error*/) {
    auto* watch = static_cast<PowerProfilesBus*>(self);
    const char* interface = nullptr;
    if (sd_bus_message_read(message, "s", &interface) < 0) return 0;
    if (const auto profile = changedProfile(message)) watch->profile_ = profile;
    return 0;
}

// Finds a daemon that answers, reads its profile and follows its changes from then on.
bool PowerProfilesBus::subscribe() {
    for (const ProfileDaemon& daemon : kDaemons) {
        auto profile = readProfile(bus_, daemon);
        if (!profile) continue;
        // Matched by path: signals carry the daemon's unique name, not the well-known one.
        if (sd_bus_match_signal(bus_, &slot_, nullptr, daemon.path,
                                "org.freedesktop.DBus.Properties", "PropertiesChanged",
                                onPropertiesChanged, this) < 0) {
            return false;
        }
        profile_ = std::move(profile);
        return true;
    }
    return false;
}

void PowerProfilesBus::drainSignals() {
    for (;;) {
        const int handled = sd_bus_process(bus_, nullptr);
        if (handled == 0) return;
        if (handled < 0) {
            // The bus went away: forget the daemon and look for it again later.
            close();
            return;
        }
    }
}

std::optional<std::string> PowerProfilesBus::activeProfile() {
    if (slot_) {
        drainSignals();
        if (slot_) return profile_;
    }
    const MonoTime now = MonoTime::now();
    if (triedAt_ && now - *triedAt_ < retryAfter) return std::nullopt;
    triedAt_ = now;
    if (!open() || !subscribe()) return std::nullopt;
    return profile_;
}

}  // namespace velmora
