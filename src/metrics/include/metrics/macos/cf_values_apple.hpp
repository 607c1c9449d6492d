#pragma once

#include <CoreFoundation/CoreFoundation.h>

#include <memory>
#include <optional>
#include <string>

#include "metrics/macos/registry.hpp"

namespace velmora {

/// A Core Foundation string as UTF-8.
std::optional<std::string> stringFromCF(CFStringRef text);

/// Numbers, booleans, strings and one level of dictionary; anything else gives nothing.
std::optional<RegistryValue> registryValueFromCF(CFTypeRef value);

/// Releases a Core Foundation object when the last owner lets go.
inline std::shared_ptr<const void> ownedCF(CFTypeRef object) {
    if (!object) return nullptr;
    return {object, [](const void* p) { CFRelease(p); }};
}

}  // namespace velmora
