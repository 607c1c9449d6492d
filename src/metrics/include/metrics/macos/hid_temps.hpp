#pragma once

#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "metrics/macos/hid_event_system.hpp"
#include "metrics/temp_reading.hpp"

namespace velmora {

/// The temperature sensors of the HID event system; unavailable when any function is missing.
class HIDTemps {
  public:
    static constexpr std::string_view frameworkPath =
        "/System/Library/Frameworks/IOKit.framework/IOKit";
    static constexpr int bindNow = 2;
    static constexpr std::int64_t temperatureEvent = 15;
    static constexpr std::int32_t temperatureField = 15 << 16;

    explicit HIDTemps(HIDEventSystem& system);

    bool available() const { return available_; }
    std::vector<NamedTemp> read();

  private:
    struct Bound {
        bool copyServices = false;
        bool copyEvent = false;
        bool copyProp = false;
        bool floatValue = false;
    };

    std::string productName(const HIDObject& service);

    HIDEventSystem& system_;
    HIDObject client_;
    Bound bound_;
    bool available_ = false;
};

/// "cpu", "gpu", "ssd" or "battery" from a sensor's product name, tested in that order.
std::optional<std::string> classifyHIDName(std::string_view name);

}  // namespace velmora
