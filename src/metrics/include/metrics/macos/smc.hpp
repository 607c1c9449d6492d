#pragma once

#include <cstdint>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "metrics/macos/smc_block.hpp"
#include "metrics/macos/smc_transport.hpp"
#include "metrics/temp_reading.hpp"

namespace velmora {

enum class SMCClass { cpu, gpu };

struct SMCTempKey {
    std::string key;
    SMCClass cls = SMCClass::cpu;
    std::string type;

    bool operator==(const SMCTempKey&) const = default;
};

/// A key's data type and its value bytes (the key's own size, at most 32).
struct SMCValue {
    std::string type;
    std::vector<std::uint8_t> bytes;
};

/// Reads the System Management Controller. Discovers its CPU and GPU temperature keys once.
class SMC {
  public:
    /// Keys beyond this count are taken as a corrupt "#KEY" and not enumerated.
    static constexpr std::uint32_t maxKeyCount = 4999;

    /// Nothing when there is no connection (no AppleSMC service, or opening it was refused).
    static std::unique_ptr<SMC> open(std::unique_ptr<SMCTransport> transport);

    /// One round trip; nothing when the call fails or the SMC's result byte is not 0.
    std::optional<SMCParamBlock> call(const SMCParamBlock& block);
    std::optional<SMCValue> read(std::string_view key);
    /// Temperature types first, then unsigned integers.
    std::optional<double> number(std::string_view key);
    static std::string string(std::uint32_t code) { return fourCharString(code); }
    /// The hottest plausible key of the class; ties keep the earlier key.
    std::optional<TempReading> hottest(SMCClass cls);

    const std::vector<SMCTempKey>& tempKeys() const { return tempKeys_; }

  private:
    explicit SMC(std::unique_ptr<SMCTransport> transport) : transport_(std::move(transport)) {}
    void discoverKeys();
    std::optional<std::uint32_t> keyCount();

    std::unique_ptr<SMCTransport> transport_;
    std::vector<SMCTempKey> tempKeys_;
};

/// Celsius from "sp78", "fpe2" (big-endian) or "flt " (host order, deliberately).
std::optional<double> decodeSMCTemperature(std::string_view type,
                                           const std::vector<std::uint8_t>& bytes);

/// `cpu` or `gpu` for temperature keys worth showing; "TCGC" is the GPU, "TCTD" is skipped.
std::optional<SMCClass> classifySMCKey(std::string_view key);

}  // namespace velmora
