#include "actuators/fake_logind.hpp"

#include <string>
#include <system_error>
#include <utility>

namespace velmora::testing {
namespace {

const sd_bus_vtable* managerVtable(sd_bus_message_handler_t canPowerOff,
                                   sd_bus_message_handler_t powerOff) {
    static const sd_bus_vtable table[] = {
        SD_BUS_VTABLE_START(0),
        SD_BUS_METHOD("CanPowerOff", "", "s", canPowerOff, SD_BUS_VTABLE_UNPRIVILEGED),
        SD_BUS_METHOD("PowerOff", "b", "", powerOff, SD_BUS_VTABLE_UNPRIVILEGED),
        SD_BUS_VTABLE_END};
    return table;
}

std::string failure(const char* what, int result) {
    return std::string(what) + ": " + std::generic_category().message(-result);
}

}  // namespace

FakeLogind::FakeLogind(const std::string& busAddress, FakeLogindScript script)
    : script_(std::move(script)) {
    if (connect(busAddress)) thread_ = std::thread([this] { serve(); });
}

FakeLogind::~FakeLogind() {
    stop_ = true;
    if (thread_.joinable()) thread_.join();
    for (sd_bus_message* call : held_)
        sd_bus_message_unref(call);
    sd_bus_slot_unref(slot_);
    sd_bus_flush_close_unref(bus_);
}

bool FakeLogind::connect(const std::string& busAddress) {
    const auto fail = [this](const char* what, int result) {
        problem_ = failure(what, result);
        return false;
    };
    int result = sd_bus_new(&bus_);
    if (result >= 0) result = sd_bus_set_address(bus_, busAddress.c_str());
    if (result >= 0) result = sd_bus_set_bus_client(bus_, 1);
    if (result >= 0) result = sd_bus_start(bus_);
    if (result < 0) return fail("connect", result);
    result = sd_bus_add_object_vtable(bus_, &slot_, "/org/freedesktop/login1",
                                      "org.freedesktop.login1.Manager",
                                      managerVtable(&onCanPowerOff, &onPowerOff), this);
    if (result < 0) return fail("export", result);
    result = sd_bus_request_name(bus_, "org.freedesktop.login1", 0);
    if (result < 0) return fail("own name", result);
    return true;
}

void FakeLogind::serve() {
    while (!stop_) {
        if (released_) answerHeld();
        const int result = sd_bus_process(bus_, nullptr);
        if (result < 0) return;
        if (result == 0) sd_bus_wait(bus_, 20000);
    }
}

void FakeLogind::answerHeld() {
    for (sd_bus_message* call : held_) {
        sd_bus_reply_method_return(call, "");
        sd_bus_message_unref(call);
    }
    held_.clear();
}

std::vector<bool> FakeLogind::powerOffCalls() {
    const std::lock_guard lock(mutex_);
    return powerOffCalls_;
}

int FakeLogind::onCanPowerOff(sd_bus_message* call, void* self, sd_bus_error* /*error*/) {
    auto* fake = static_cast<FakeLogind*>(self);
    return sd_bus_reply_method_return(call, "s", fake->script_.canPowerOff.c_str());
}

int FakeLogind::onPowerOff(sd_bus_message* call, void* self, sd_bus_error* error) {
    auto* fake = static_cast<FakeLogind*>(self);
    int interactive = 0;
    const int result = sd_bus_message_read(call, "b", &interactive);
    if (result < 0) return result;
    {
        const std::lock_guard lock(fake->mutex_);
        fake->powerOffCalls_.push_back(interactive != 0);
    }
    switch (fake->script_.powerOff) {
        case FakeLogindScript::PowerOff::succeed:
            return sd_bus_reply_method_return(call, "");
        case FakeLogindScript::PowerOff::refuse:
            return sd_bus_error_set(error, fake->script_.errorName.c_str(),
                                    fake->script_.errorMessage.c_str());
        case FakeLogindScript::PowerOff::hold:
            if (fake->released_) return sd_bus_reply_method_return(call, "");
            [[fallthrough]];
        case FakeLogindScript::PowerOff::ignore:
            fake->held_.push_back(sd_bus_message_ref(call));
            return 1;
    }
    return 1;
}

}  // namespace velmora::testing
