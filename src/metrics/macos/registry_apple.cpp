#include <IOKit/IOKitLib.h>

#include "metrics/macos/apple_ports.hpp"
#include "metrics/macos/cf_values_apple.hpp"

namespace velmora {

namespace {

class AppleRegistryEntry final : public RegistryEntry {
  public:
    explicit AppleRegistryEntry(io_registry_entry_t entry) : entry_(entry) {}
    ~AppleRegistryEntry() override { IOObjectRelease(entry_); }
    AppleRegistryEntry(const AppleRegistryEntry&) = delete;
    AppleRegistryEntry& operator=(const AppleRegistryEntry&) = delete;

    std::optional<RegistryValue> property(std::string_view key) const override {
        const auto name = ownedCF(CFStringCreateWithBytes(
            kCFAllocatorDefault, reinterpret_cast<const UInt8*>(key.data()),
            static_cast<CFIndex>(key.size()), kCFStringEncodingUTF8, false));
        if (!name) return std::nullopt;
        const auto value = ownedCF(IORegistryEntryCreateCFProperty(
            entry_, static_cast<CFStringRef>(name.get()), kCFAllocatorDefault, 0));
        return registryValueFromCF(value.get());
    }

  private:
    io_registry_entry_t entry_;
};

class AppleRegistry final : public IORegistry {
  public:
    std::unique_ptr<RegistryEntry> firstMatching(std::string_view className) override {
        const std::string name(className);
        const io_service_t service =
            IOServiceGetMatchingService(kIOMainPortDefault, IOServiceMatching(name.c_str()));
        if (service == 0) return nullptr;
        return std::make_unique<AppleRegistryEntry>(service);
    }

    std::optional<std::vector<std::unique_ptr<RegistryEntry>>> allMatching(
        std::string_view className) override {
        const std::string name(className);
        io_iterator_t iterator = 0;
        if (IOServiceGetMatchingServices(kIOMainPortDefault, IOServiceMatching(name.c_str()),
                                         &iterator) != KERN_SUCCESS) {
            return std::nullopt;
        }
        std::vector<std::unique_ptr<RegistryEntry>> entries;
        while (const io_registry_entry_t entry = IOIteratorNext(iterator)) {
            entries.push_back(std::make_unique<AppleRegistryEntry>(entry));
        }
        IOObjectRelease(iterator);
        return entries;
    }
};

}  // namespace

std::unique_ptr<IORegistry> makeAppleRegistry() {
    return std::make_unique<AppleRegistry>();
}

}  // namespace velmora
