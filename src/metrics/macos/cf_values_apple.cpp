#include "metrics/macos/cf_values_apple.hpp"

#include <vector>

namespace velmora {

namespace {

std::optional<RegistryScalar> scalarFromCF(CFTypeRef value) {
    const CFTypeID type = CFGetTypeID(value);
    if (type == CFBooleanGetTypeID()) {
        // Boolean is an unsigned char: compare, or the variant cannot tell which number it is.
        return CFBooleanGetValue(static_cast<CFBooleanRef>(value)) != 0;
    }
    if (type == CFNumberGetTypeID()) {
        const auto number = static_cast<CFNumberRef>(value);
        if (CFNumberIsFloatType(number)) {
            double real = 0;
            CFNumberGetValue(number, kCFNumberDoubleType, &real);
            return real;
        }
        std::int64_t integer = 0;
        CFNumberGetValue(number, kCFNumberSInt64Type, &integer);
        return integer;
    }
    if (type == CFStringGetTypeID()) {
        if (auto text = stringFromCF(static_cast<CFStringRef>(value))) return *text;
    }
    return std::nullopt;
}

}  // namespace

std::optional<std::string> stringFromCF(CFStringRef text) {
    const CFIndex length = CFStringGetLength(text);
    const CFIndex capacity = CFStringGetMaximumSizeForEncoding(length, kCFStringEncodingUTF8) + 1;
    std::vector<char> buffer(static_cast<std::size_t>(capacity));
    if (!CFStringGetCString(text, buffer.data(), capacity, kCFStringEncodingUTF8)) {
        return std::nullopt;
    }
    return std::string(buffer.data());
}

std::optional<RegistryValue> registryValueFromCF(CFTypeRef value) {
    if (!value) return std::nullopt;
    if (CFGetTypeID(value) == CFDictionaryGetTypeID()) {
        const auto dict = static_cast<CFDictionaryRef>(value);
        const CFIndex count = CFDictionaryGetCount(dict);
        std::vector<const void*> keys(static_cast<std::size_t>(count));
        std::vector<const void*> values(static_cast<std::size_t>(count));
        CFDictionaryGetKeysAndValues(dict, keys.data(), values.data());
        RegistryDictionary result;
        for (std::size_t i = 0; i < keys.size(); ++i) {
            if (CFGetTypeID(keys[i]) != CFStringGetTypeID()) continue;
            const auto key = stringFromCF(static_cast<CFStringRef>(keys[i]));
            const auto scalar = scalarFromCF(values[i]);
            if (key && scalar) result.emplace(*key, *scalar);
        }
        return result;
    }
    const auto scalar = scalarFromCF(value);
    if (!scalar) return std::nullopt;
    return std::visit([](const auto& v) { return RegistryValue{v}; }, *scalar);
}

}  // namespace velmora
