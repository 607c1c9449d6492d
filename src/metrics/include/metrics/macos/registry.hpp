#pragma once

#include <cstdint>
#include <map>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <variant>
#include <vector>

namespace velmora {

/// A property value of the I/O registry; dictionaries are one level deep, which is all the
/// metrics read ("PerformanceStatistics").
using RegistryScalar = std::variant<bool, std::int64_t, std::uint64_t, double, std::string>;
using RegistryDictionary = std::map<std::string, RegistryScalar, std::less<>>;
using RegistryValue =
    std::variant<bool, std::int64_t, std::uint64_t, double, std::string, RegistryDictionary>;

/// One registry entry, released when destroyed.
class RegistryEntry {
  public:
    virtual ~RegistryEntry() = default;
    virtual std::optional<RegistryValue> property(std::string_view key) const = 0;
};

/// The I/O registry, looked up by service class name ("AppleSmartBattery", "IOAccelerator").
class IORegistry {
  public:
    virtual ~IORegistry() = default;
    /// The first matching service, or nothing.
    virtual std::unique_ptr<RegistryEntry> firstMatching(std::string_view className) = 0;
    /// Every matching entry; nothing when the iterator cannot be made.
    virtual std::optional<std::vector<std::unique_ptr<RegistryEntry>>> allMatching(
        std::string_view className) = 0;
};

/// A numeric property as a double; booleans and strings are not numbers.
std::optional<double> registryNumber(const RegistryScalar& value);
std::optional<double> registryNumber(const RegistryValue& value);
/// A boolean property; a number counts as true when non-zero.
std::optional<bool> registryBool(const RegistryValue& value);

}  // namespace velmora
