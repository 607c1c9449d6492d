#pragma once

#include <cstdint>
#include <map>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "metrics/macos/registry.hpp"

namespace velmora {

/// A Core Foundation object of the HID event system; the deleter releases it ("Copy" and
/// "Create" results are owned).
using HIDObject = std::shared_ptr<const void>;

/// The IOKit event-system client functions, which are private and bound by name at run time.
/// `bind` reports whether one symbol was found; the calls are only made once bound.
class HIDEventSystem {
  public:
    virtual ~HIDEventSystem() = default;

    virtual bool openFramework(std::string_view path, int mode) = 0;
    virtual bool bind(std::string_view symbol) = 0;

    virtual HIDObject createClient() = 0;
    virtual void setMatching(const HIDObject& client, const std::map<std::string, int>& match) = 0;
    /// Nothing when the call returns nothing or something other than an array.
    virtual std::optional<std::vector<HIDObject>> copyServices(const HIDObject& client) = 0;
    virtual HIDObject copyEvent(const HIDObject& service, std::int64_t type, std::int32_t options,
                                std::uint64_t timestamp) = 0;
    virtual std::optional<RegistryValue> copyProperty(const HIDObject& service,
                                                      std::string_view key) = 0;
    virtual double floatValue(const HIDObject& event, std::int32_t field) = 0;
};

}  // namespace velmora
