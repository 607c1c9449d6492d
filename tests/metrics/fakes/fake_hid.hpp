#pragma once

#include <cmath>
#include <memory>
#include <set>
#include <string>
#include <vector>

#include "metrics/macos/hid_event_system.hpp"

namespace velmora::testing {

/// HID temperature services: each has an optional product property and an optional event.
struct FakeHIDState {
    struct Service {
        std::optional<RegistryValue> product;
        std::optional<double> celsius;
    };
    std::vector<Service> services;
    bool frameworkOpens = true;
    std::set<std::string, std::less<>> missingSymbols;
    bool clientCreated = true;
    bool servicesCopied = true;
    std::vector<std::string> bound;
    std::map<std::string, int> matching;

    void add(std::optional<std::string> name, std::optional<double> celsius) {
        std::optional<RegistryValue> product;
        if (name) product = RegistryValue{*name};
        services.push_back({product, celsius});
    }
};

class FakeHID final : public HIDEventSystem {
  public:
    explicit FakeHID(std::shared_ptr<FakeHIDState> state) : state_(std::move(state)) {}

    bool openFramework(std::string_view path, int mode) override {
        return state_->frameworkOpens &&
               path == "/System/Library/Frameworks/IOKit.framework/IOKit" && mode == 2;
    }
    bool bind(std::string_view symbol) override {
        if (state_->missingSymbols.contains(symbol)) return false;
        state_->bound.emplace_back(symbol);
        return true;
    }
    HIDObject createClient() override {
        if (!state_->clientCreated) return nullptr;
        return std::make_shared<int>(0);
    }
    void setMatching(const HIDObject&, const std::map<std::string, int>& match) override {
        state_->matching = match;
    }
    std::optional<std::vector<HIDObject>> copyServices(const HIDObject&) override {
        if (!state_->servicesCopied) return std::nullopt;
        std::vector<HIDObject> services;
        for (std::size_t i = 0; i < state_->services.size(); ++i) {
            services.push_back(std::make_shared<std::size_t>(i));
        }
        return services;
    }
    HIDObject copyEvent(const HIDObject& service, std::int64_t type, std::int32_t options,
                        std::uint64_t timestamp) override {
        const auto& s = state_->services.at(index(service));
        if (type != 15 || options != 0 || timestamp != 0 || !s.celsius) return nullptr;
        return std::make_shared<double>(*s.celsius);
    }
    std::optional<RegistryValue> copyProperty(const HIDObject& service,
                                              std::string_view key) override {
        if (key != "Product") return std::nullopt;
        return state_->services.at(index(service)).product;
    }
    double floatValue(const HIDObject& event, std::int32_t field) override {
        if (field != 0xF0000) return std::nan("");
        return *static_cast<const double*>(event.get());
    }

  private:
    static std::size_t index(const HIDObject& service) {
        return *static_cast<const std::size_t*>(service.get());
    }
    std::shared_ptr<FakeHIDState> state_;
};

}  // namespace velmora::testing
