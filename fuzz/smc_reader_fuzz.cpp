// The SMC reader against a controller that answers anything: each kernel call takes one byte
// (odd: the call fails) and then the 80-byte reply from the input; once the input is used up every
// call fails. Discovery, the hottest key, plain key reads and the fans and power read through the
// SMC must hold whatever comes back.

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <memory>
#include <string>

#include "fuzz_support.hpp"
#include "metrics/macos/smc.hpp"
#include "metrics/macos/system_metrics.hpp"

namespace {

using velmora::SMC;
using velmora::SMCClass;
using velmora::fuzz::require;

class ScriptedTransport final : public velmora::SMCTransport {
  public:
    explicit ScriptedTransport(velmora::fuzz::ByteReader replies) : replies_(replies) {}

    bool callStructMethod(std::uint32_t /*selector*/, const velmora::SMCBlockBytes& /*input*/,
                          velmora::SMCBlockBytes& output) override {
        if (replies_.empty() || (replies_.take<std::uint8_t>() & 1U) != 0) return false;
        const std::string_view reply = replies_.takeBytes(output.size());
        output.fill(0);
        std::copy(reply.begin(), reply.end(), output.begin());
        return true;
    }

  private:
    velmora::fuzz::ByteReader replies_;
};

bool isTemperatureType(std::string_view type) {
    return type == "sp78" || type == "fpe2" || type == "flt ";
}

void checkDiscovery(const SMC& smc) {
    require(smc.tempKeys().size() <= SMC::maxKeyCount, "discovery stops at the key count cap");
    for (const auto& entry : smc.tempKeys()) {
        require(entry.key.size() == 4, "a discovered key has four characters");
        require(velmora::classifySMCKey(entry.key) == entry.cls, "a key keeps its own class");
        require(isTemperatureType(entry.type), "a discovered key had a temperature type");
    }
}

void checkHottest(SMC& smc, SMCClass cls) {
    const auto hottest = smc.hottest(cls);
    if (!hottest) return;
    require(velmora::plausibleCelsius(hottest->celsius), "the hottest key is plausible");
    const bool named = std::any_of(smc.tempKeys().begin(), smc.tempKeys().end(), [&](auto& k) {
        return k.cls == cls && hottest->source == "SMC " + k.key;
    });
    require(named, "the hottest value names a discovered key of its class");
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    auto smc =
        SMC::open(std::make_unique<ScriptedTransport>(velmora::fuzz::ByteReader(data, size)));
    require(smc != nullptr, "a connection always gives a reader");
    checkDiscovery(*smc);
    checkHottest(*smc, SMCClass::cpu);
    checkHottest(*smc, SMCClass::gpu);
    if (const auto value = smc->read("F0Ac")) {
        require(!value->bytes.empty() && value->bytes.size() <= 32, "a value has 1 to 32 bytes");
        require(value->type.empty() || value->type.size() == 4, "a type has four characters");
    }
    for (const auto& fan : velmora::readFans(smc.get())) {
        require(velmora::plausibleRPM(fan.rpm), "a fan speed read through the SMC is plausible");
        require(!fan.minRPM || velmora::plausibleRPM(*fan.minRPM), "a fan minimum is plausible");
        require(!fan.maxRPM || velmora::plausibleRPM(*fan.maxRPM), "a fan maximum is plausible");
    }
    if (const auto power = velmora::powerReading(smc.get(), std::nullopt)) {
        require(power->watts > 0.5 && power->watts < 400.0, "system power is believable");
    }
    return 0;
}
