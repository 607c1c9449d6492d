#include "actuators/linux/logind_calls.hpp"

#include <systemd/sd-bus.h>

#include <algorithm>
#include <cerrno>
#include <cmath>
#include <cstdint>
#include <functional>
#include <memory>
#include <optional>
#include <sstream>
#include <string>
#include <system_error>

namespace velmora {
namespace {

constexpr const char* destination = "org.freedesktop.login1";
constexpr const char* objectPath = "/org/freedesktop/login1";
constexpr const char* managerInterface = "org.freedesktop.login1.Manager";

struct BusClose {
    void operator()(sd_bus* bus) const { sd_bus_flush_close_unref(bus); }
};
struct MessageUnref {
    void operator()(sd_bus_message* message) const { sd_bus_message_unref(message); }
};
using Bus = std::unique_ptr<sd_bus, BusClose>;
using Message = std::unique_ptr<sd_bus_message, MessageUnref>;

/// Frees the bus error whatever way the call went.
struct BusError {
    sd_bus_error error = SD_BUS_ERROR_NULL;
    BusError() = default;
    ~BusError() { sd_bus_error_free(&error); }
    BusError(const BusError&) = delete;
    BusError& operator=(const BusError&) = delete;
    BusError(BusError&&) = delete;
    BusError& operator=(BusError&&) = delete;
};

struct CallResult {
    Message reply;
    std::optional<AutomationOutcome> failure;
};

std::string systemText(int negativeErrno) {
    return std::generic_category().message(-negativeErrno);
}

std::uint64_t microseconds(Seconds timeout) {
    const double seconds = timeout.count();
    const double bounded = std::isnan(seconds) ? 0.0 : std::clamp(seconds, 0.001, 86400.0 * 365);
    return static_cast<std::uint64_t>(std::llround(bounded * 1e6));
}

bool isRefusal(const sd_bus_error& error) {
    return sd_bus_error_has_name(&error, SD_BUS_ERROR_ACCESS_DENIED) ||
           sd_bus_error_has_name(&error, SD_BUS_ERROR_INTERACTIVE_AUTHORIZATION_REQUIRED);
}

AutomationOutcome callFailure(int result, const sd_bus_error& error, Seconds timeout) {
    if (result == -ETIMEDOUT) {
        std::ostringstream text;
        text << "logind timed out: no answer within " << timeout.count() << " s";
        return AutomationOutcome::failed(text.str());
    }
    if (!sd_bus_error_is_set(&error)) {
        return AutomationOutcome::failed("could not reach logind: " + systemText(result));
    }
    std::string text = std::string(error.name) + ": " + (error.message ? error.message : "");
    if (isRefusal(error)) return AutomationOutcome::denied(std::move(text));
    return AutomationOutcome::failed(std::move(text));
}

// One method call on logind's manager over a fresh system-bus connection of this thread.
CallResult callManager(const char* method, const std::function<int(sd_bus_message*)>& append,
                       Seconds timeout) {
    sd_bus* rawBus = nullptr;
    int result = sd_bus_open_system(&rawBus);
    const Bus bus(rawBus);
    if (result < 0) {
        return {nullptr, AutomationOutcome::failed("could not connect to the system bus: " +
                                                   systemText(result))};
    }
    sd_bus_message* rawCall = nullptr;
    result = sd_bus_message_new_method_call(bus.get(), &rawCall, destination, objectPath,
                                            managerInterface, method);
    const Message call(rawCall);
    if (result >= 0 && append) result = append(call.get());
    if (result < 0) {
        return {nullptr, AutomationOutcome::failed("could not build the logind call: " +
                                                   systemText(result))};
    }
    BusError error;
    sd_bus_message* rawReply = nullptr;
    result = sd_bus_call(bus.get(), call.get(), microseconds(timeout), &error.error, &rawReply);
    Message reply(rawReply);
    if (result < 0) return {nullptr, callFailure(result, error.error, timeout)};
    return {std::move(reply), std::nullopt};
}

AutomationOutcome readCanPowerOff(sd_bus_message* reply) {
    const char* answer = nullptr;
    const int result = sd_bus_message_read(reply, "s", &answer);
    if (result < 0 || answer == nullptr) {
        return AutomationOutcome::failed("logind CanPowerOff gave an unreadable answer: " +
                                         systemText(result < 0 ? result : -EBADMSG));
    }
    const std::string value = answer;
    const std::string text = "logind CanPowerOff answered \"" + value + "\"";
    if (value == "yes") return AutomationOutcome::granted();
    if (value == "challenge" || value == "no") return AutomationOutcome::denied(text);
    return AutomationOutcome::failed(text);
}

}  // namespace

AutomationOutcome askCanPowerOff(Seconds timeout) {
    CallResult call = callManager("CanPowerOff", nullptr, timeout);
    if (call.failure) return *call.failure;
    return readCanPowerOff(call.reply.get());
}

AutomationOutcome requestPowerOff(Seconds timeout) {
    const auto notInteractive = [](sd_bus_message* message) {
        return sd_bus_message_append(message, "b", 0);
    };
    CallResult call = callManager("PowerOff", notInteractive, timeout);
    if (call.failure) return *call.failure;
    return AutomationOutcome::granted();
}

}  // namespace velmora
