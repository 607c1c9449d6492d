#include <CoreFoundation/CoreFoundation.h>
#include <dlfcn.h>

#include <map>
#include <string>

#include "metrics/macos/apple_ports.hpp"
#include "metrics/macos/cf_values_apple.hpp"

namespace velmora {

namespace {

// The private event-system client functions, as IOKit exports them.
using CreateFn = CFTypeRef (*)(CFAllocatorRef);
using SetMatchingFn = int (*)(CFTypeRef, CFDictionaryRef);
using CopyServicesFn = CFArrayRef (*)(CFTypeRef);
using CopyEventFn = CFTypeRef (*)(CFTypeRef, std::int64_t, std::int32_t, std::int64_t);
using CopyPropertyFn = CFTypeRef (*)(CFTypeRef, CFStringRef);
using FloatValueFn = double (*)(CFTypeRef, std::int32_t);

class AppleHIDEventSystem final : public HIDEventSystem {
  public:
    bool openFramework(std::string_view path, int mode) override {
        library_ = dlopen(std::string(path).c_str(), mode);
        return library_ != nullptr;
    }

    bool bind(std::string_view symbol) override {
        void* address = dlsym(library_, std::string(symbol).c_str());
        if (!address) return false;
        symbols_[std::string(symbol)] = address;
        return true;
    }

    HIDObject createClient() override {
        return ownedCF(fn<CreateFn>("IOHIDEventSystemClientCreate")(kCFAllocatorDefault));
    }

    void setMatching(const HIDObject& client, const std::map<std::string, int>& match) override {
        const auto dict = ownedCF(CFDictionaryCreateMutable(kCFAllocatorDefault, 0,
                                                            &kCFTypeDictionaryKeyCallBacks,
                                                            &kCFTypeDictionaryValueCallBacks));
        for (const auto& [key, value] : match) {
            const auto name = ownedCF(
                CFStringCreateWithCString(kCFAllocatorDefault, key.c_str(), kCFStringEncodingUTF8));
            const auto number =
                ownedCF(CFNumberCreate(kCFAllocatorDefault, kCFNumberIntType, &value));
            CFDictionarySetValue(static_cast<CFMutableDictionaryRef>(const_cast<void*>(dict.get())),
                                 name.get(), number.get());
        }
        fn<SetMatchingFn>("IOHIDEventSystemClientSetMatching")(
            client.get(), static_cast<CFDictionaryRef>(dict.get()));
    }

    std::optional<std::vector<HIDObject>> copyServices(const HIDObject& client) override {
        const auto array =
            ownedCF(fn<CopyServicesFn>("IOHIDEventSystemClientCopyServices")(client.get()));
        if (!array || CFGetTypeID(array.get()) != CFArrayGetTypeID()) return std::nullopt;
        const auto services = static_cast<CFArrayRef>(array.get());
        std::vector<HIDObject> result;
        for (CFIndex i = 0; i < CFArrayGetCount(services); ++i) {
            const void* service = CFArrayGetValueAtIndex(services, i);
            result.push_back(ownedCF(CFRetain(service)));
        }
        return result;
    }

    HIDObject copyEvent(const HIDObject& service, std::int64_t type, std::int32_t options,
                        std::uint64_t timestamp) override {
        return ownedCF(fn<CopyEventFn>("IOHIDServiceClientCopyEvent")(
            service.get(), type, options, static_cast<std::int64_t>(timestamp)));
    }

    std::optional<RegistryValue> copyProperty(const HIDObject& service,
                                              std::string_view key) override {
        const auto name = ownedCF(CFStringCreateWithBytes(
            kCFAllocatorDefault, reinterpret_cast<const UInt8*>(key.data()),
            static_cast<CFIndex>(key.size()), kCFStringEncodingUTF8, false));
        const auto value = ownedCF(fn<CopyPropertyFn>("IOHIDServiceClientCopyProperty")(
            service.get(), static_cast<CFStringRef>(name.get())));
        return registryValueFromCF(value.get());
    }

    double floatValue(const HIDObject& event, std::int32_t field) override {
        return fn<FloatValueFn>("IOHIDEventGetFloatValue")(event.get(), field);
    }

  private:
    // Only called for symbols that `bind` found; the reader never calls an unbound one.
    template <typename Fn>
    Fn fn(const char* name) const {
        return reinterpret_cast<Fn>(symbols_.at(name));
    }

    void* library_ = nullptr;
    std::map<std::string, void*> symbols_;
};

}  // namespace

std::unique_ptr<HIDEventSystem> makeAppleHIDEventSystem() {
    return std::make_unique<AppleHIDEventSystem>();
}

}  // namespace velmora
