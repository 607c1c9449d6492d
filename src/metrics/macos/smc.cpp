#include "metrics/macos/smc.hpp"

#include <utility>

namespace velmora {

std::unique_ptr<SMC> SMC::open(std::unique_ptr<SMCTransport> transport) {
    if (!transport) return nullptr;
    std::unique_ptr<SMC> smc(new SMC(std::move(transport)));
    smc->discoverKeys();
    return smc;
}

std::optional<SMCParamBlock> SMC::call(const SMCParamBlock& block) {
    SMCBlockBytes reply{};
    if (!transport_->callStructMethod(kSMCSelector, encodeSMCBlock(block), reply)) {
        return std::nullopt;
    }
    SMCParamBlock decoded = decodeSMCBlock(reply);
    if (decoded.result != 0) return std::nullopt;
    return decoded;
}

std::optional<SMCValue> SMC::read(std::string_view key) {
    const std::uint32_t code = fourCharCode(key);
    const auto info =
        call({.key = code, .command = static_cast<std::uint8_t>(SMCCommand::readKeyInfo)});
    if (!info || info->dataSize < 1 || info->dataSize > 32) return std::nullopt;
    const auto value = call({.key = code,
                             .dataSize = info->dataSize,
                             .command = static_cast<std::uint8_t>(SMCCommand::readBytes)});
    if (!value) return std::nullopt;
    const auto size = static_cast<std::ptrdiff_t>(info->dataSize);
    return SMCValue{string(info->dataType),
                    std::vector<std::uint8_t>(value->bytes.begin(), value->bytes.begin() + size)};
}

std::optional<std::uint32_t> SMC::keyCount() {
    const auto count = read("#KEY");
    if (!count || count->bytes.size() < 4) return std::nullopt;
    std::uint32_t n = 0;
    for (std::size_t i = 0; i < 4; ++i)
        n = (n << 8U) | count->bytes[i];
    return n;
}

void SMC::discoverKeys() {
    const auto count = keyCount();
    // Unsigned on purpose: a count of 0 wraps and is skipped with the absurdly large ones.
    if (!count || *count - 1 >= maxKeyCount) return;
    for (std::uint32_t index = 0; index < *count; ++index) {
        const auto reply =
            call({.command = static_cast<std::uint8_t>(SMCCommand::keyAtIndex), .index = index});
        if (!reply) continue;
        std::string key = string(reply->key);
        const auto cls = classifySMCKey(key);
        if (!cls) continue;
        const auto value = read(key);
        if (!value || !decodeSMCTemperature(value->type, value->bytes)) continue;
        tempKeys_.push_back({std::move(key), *cls, value->type});
    }
}

std::optional<double> SMC::number(std::string_view key) {
    const auto value = read(key);
    if (!value) return std::nullopt;
    if (const auto celsius = decodeSMCTemperature(value->type, value->bytes)) return celsius;
    const auto& b = value->bytes;
    if (value->type == "ui8 " && !b.empty()) return b[0];
    if (value->type == "ui16" && b.size() >= 2) return (b[0] << 8U) | b[1];
    if (value->type == "ui32" && b.size() >= 4) {
        return static_cast<double>((std::uint32_t{b[0]} << 24U) | (std::uint32_t{b[1]} << 16U) |
                                   (std::uint32_t{b[2]} << 8U) | b[3]);
    }
    return std::nullopt;
}

std::optional<TempReading> SMC::hottest(SMCClass cls) {
    std::optional<TempReading> best;
    for (const SMCTempKey& entry : tempKeys_) {
        if (entry.cls != cls) continue;
        const auto value = read(entry.key);
        if (!value) continue;
        const auto celsius = decodeSMCTemperature(value->type, value->bytes);
        if (!celsius || !plausibleCelsius(*celsius)) continue;
        if (!best || *celsius > best->celsius) best = TempReading{*celsius, "SMC " + entry.key};
    }
    return best;
}

}  // namespace velmora
