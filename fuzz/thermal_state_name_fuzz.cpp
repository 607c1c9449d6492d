// A thermal state's name as typed on the command line (--force-thermal) or read back from
// elsewhere: any bytes. The answer is nothing or one of the four states, and a name is accepted
// exactly when it spells a state in some mix of letter cases.

#include <cstddef>
#include <cstdint>
#include <string>

#include "fuzz_support.hpp"
#include "policy/thermal_state.hpp"

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    using velmora::ThermalState;
    using velmora::fuzz::require;
    const std::string_view name = velmora::fuzz::asText(data, size);
    const auto state = velmora::thermalStateNamed(name);
    const std::string lowered = velmora::fuzz::asciiLowered(name);
    const bool spellsAState =
        lowered == "nominal" || lowered == "fair" || lowered == "serious" || lowered == "critical";
    require(state.has_value() == spellsAState, "exactly the four names are accepted, any case");
    if (!state) return 0;

    require(*state == ThermalState::nominal || *state == ThermalState::fair ||
                *state == ThermalState::serious || *state == ThermalState::critical,
            "a parsed state is one of the four");
    const auto written = velmora::thermalStateName(*state);
    require(written.has_value() && *written == lowered, "a state's name is the lower-cased input");
    require(velmora::thermalStateToC(*state).has_value(), "every parsed state has a temperature");
    return 0;
}
