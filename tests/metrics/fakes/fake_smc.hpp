#pragma once

#include <cstdint>
#include <cstring>
#include <map>
#include <memory>
#include <set>
#include <string>
#include <vector>

#include "metrics/macos/smc.hpp"

namespace velmora::testing {

/// An SMC with a key table: answers key-info, read-bytes and key-at-index like the real one.
struct FakeSMCState {
    struct Key {
        std::string name;
        std::string type;
        std::vector<std::uint8_t> bytes;
    };
    std::vector<Key> keys;
    /// Overrides the "#KEY" count (the number of keys by default).
    std::optional<std::uint32_t> keyCount;
    std::set<std::string> failingKeys;
    bool kernelFails = false;
    std::vector<SMCBlockBytes> sent;

    void add(std::string name, std::string type, std::vector<std::uint8_t> bytes) {
        keys.push_back({std::move(name), std::move(type), std::move(bytes)});
    }
    const Key* find(std::uint32_t code) const {
        for (const Key& key : keys) {
            if (fourCharCode(key.name) == code) return &key;
        }
        return nullptr;
    }
};

class FakeSMCTransport final : public SMCTransport {
  public:
    explicit FakeSMCTransport(std::shared_ptr<FakeSMCState> state) : state_(std::move(state)) {}

    bool callStructMethod(std::uint32_t selector, const SMCBlockBytes& input,
                          SMCBlockBytes& output) override {
        state_->sent.push_back(input);
        if (state_->kernelFails || selector != kSMCSelector) return false;
        SMCParamBlock in = decodeSMCBlock(input);
        SMCParamBlock out;
        out.key = in.key;
        if (in.command == 8) return keyAtIndex(in, output);
        const auto* key = keyFor(in.key);
        if (!key || state_->failingKeys.contains(fourCharString(in.key))) {
            out.result = 132;  // the SMC's "key not found"
        } else if (in.command == 9) {
            out.dataSize = static_cast<std::uint32_t>(key->bytes.size());
            out.dataType = fourCharCode(key->type);
        } else if (in.command == 5) {
            for (std::size_t i = 0; i < key->bytes.size() && i < in.dataSize && i < 32; ++i) {
                out.bytes[i] = key->bytes[i];
            }
        }
        output = encodeSMCBlock(out);
        return true;
    }

  private:
    const FakeSMCState::Key* keyFor(std::uint32_t code) {
        if (code == fourCharCode("#KEY")) {
            const std::uint32_t n =
                state_->keyCount.value_or(static_cast<std::uint32_t>(state_->keys.size()));
            countKey_ = {"#KEY",
                         "ui32",
                         {static_cast<std::uint8_t>(n >> 24), static_cast<std::uint8_t>(n >> 16),
                          static_cast<std::uint8_t>(n >> 8), static_cast<std::uint8_t>(n)}};
            return &countKey_;
        }
        return state_->find(code);
    }

    bool keyAtIndex(const SMCParamBlock& in, SMCBlockBytes& output) {
        SMCParamBlock out;
        if (in.index < state_->keys.size()) {
            out.key = fourCharCode(state_->keys[in.index].name);
        } else {
            out.result = 132;
        }
        output = encodeSMCBlock(out);
        return true;
    }

    std::shared_ptr<FakeSMCState> state_;
    FakeSMCState::Key countKey_;
};

/// Big-endian bytes of an sp78 temperature.
inline std::vector<std::uint8_t> sp78(double celsius) {
    const auto raw = static_cast<std::int16_t>(celsius * 256.0);
    const auto bits = static_cast<std::uint16_t>(raw);
    return {static_cast<std::uint8_t>(bits >> 8), static_cast<std::uint8_t>(bits & 0xFF)};
}

/// Big-endian bytes of an fpe2 value (fan speeds).
inline std::vector<std::uint8_t> fpe2(double value) {
    const auto raw = static_cast<std::uint16_t>(value * 4.0);
    return {static_cast<std::uint8_t>(raw >> 8), static_cast<std::uint8_t>(raw & 0xFF)};
}

/// Host-order bytes of a "flt " value.
inline std::vector<std::uint8_t> flt(float value) {
    std::vector<std::uint8_t> bytes(sizeof value);
    std::memcpy(bytes.data(), &value, sizeof value);
    return bytes;
}

}  // namespace velmora::testing
