#pragma once

#include <map>
#include <memory>
#include <string>
#include <vector>

#include "metrics/macos/registry.hpp"

namespace velmora::testing {

using FakeProperties = std::map<std::string, RegistryValue, std::less<>>;

class FakeRegistryEntry final : public RegistryEntry {
  public:
    explicit FakeRegistryEntry(FakeProperties properties) : properties_(std::move(properties)) {}
    std::optional<RegistryValue> property(std::string_view key) const override {
        const auto found = properties_.find(key);
        if (found == properties_.end()) return std::nullopt;
        return found->second;
    }

  private:
    FakeProperties properties_;
};

/// Registry services by class name, each a property dictionary; counts lookups.
struct FakeRegistryState {
    std::map<std::string, std::vector<FakeProperties>, std::less<>> services;
    bool iteratorFails = false;
    int lookups = 0;
};

class FakeRegistry final : public IORegistry {
  public:
    explicit FakeRegistry(std::shared_ptr<FakeRegistryState> state) : state_(std::move(state)) {}

    std::unique_ptr<RegistryEntry> firstMatching(std::string_view className) override {
        ++state_->lookups;
        const auto found = state_->services.find(className);
        if (found == state_->services.end() || found->second.empty()) return nullptr;
        return std::make_unique<FakeRegistryEntry>(found->second.front());
    }

    std::optional<std::vector<std::unique_ptr<RegistryEntry>>> allMatching(
        std::string_view className) override {
        ++state_->lookups;
        if (state_->iteratorFails) return std::nullopt;
        std::vector<std::unique_ptr<RegistryEntry>> entries;
        const auto found = state_->services.find(className);
        if (found != state_->services.end()) {
            for (const auto& props : found->second) {
                entries.push_back(std::make_unique<FakeRegistryEntry>(props));
            }
        }
        return entries;
    }

  private:
    std::shared_ptr<FakeRegistryState> state_;
};

}  // namespace velmora::testing
