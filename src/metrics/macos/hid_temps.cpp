#include "metrics/macos/hid_temps.hpp"

#include <array>
#include <cmath>

namespace velmora {

HIDTemps::HIDTemps(HIDEventSystem& system) : system_(system) {
    if (!system_.openFramework(frameworkPath, bindNow)) return;
    static constexpr std::array<std::string_view, 6> symbols{
        "IOHIDEventSystemClientCreate",       "IOHIDEventSystemClientSetMatching",
        "IOHIDEventSystemClientCopyServices", "IOHIDServiceClientCopyEvent",
        "IOHIDServiceClientCopyProperty",     "IOHIDEventGetFloatValue"};
    for (const std::string_view symbol : symbols) {
        if (!system_.bind(symbol)) return;
    }
    HIDObject client = system_.createClient();
    if (!client) return;
    // The vendor usage page's temperature sensors.
    system_.setMatching(client, {{"PrimaryUsagePage", 0xFF00}, {"PrimaryUsage", 5}});
    client_ = std::move(client);
    bound_ = Bound{true, true, true, true};
    available_ = true;
}

std::string HIDTemps::productName(const HIDObject& service) {
    if (bound_.copyProp) {
        const auto product = system_.copyProperty(service, "Product");
        if (product) {
            if (const auto* name = std::get_if<std::string>(&*product)) return *name;
        }
    }
    return "sensor";
}

std::vector<NamedTemp> HIDTemps::read() {
    std::vector<NamedTemp> temps;
    if (!available_ || !client_ || !bound_.copyServices) return temps;
    const auto services = system_.copyServices(client_);
    if (!services) return temps;
    for (const HIDObject& service : *services) {
        if (!bound_.copyEvent) continue;
        const HIDObject event = system_.copyEvent(service, temperatureEvent, 0, 0);
        if (!event) continue;
        const double celsius =
            bound_.floatValue ? system_.floatValue(event, temperatureField) : std::nan("");
        if (!plausibleCelsius(celsius)) continue;
        std::string name = productName(service);
        temps.push_back({name, celsius, "IOHID " + name});
    }
    return temps;
}

std::optional<std::string> classifyHIDName(std::string_view name) {
    std::string lower(name);
    for (char& c : lower) {
        if (c >= 'A' && c <= 'Z') c = static_cast<char>(c - 'A' + 'a');
    }
    auto has = [&](std::string_view part) { return lower.find(part) != std::string::npos; };
    // Order matters: a die or cluster sensor of the CPU beats a "gpu" in the same name.
    if (has("tdie") || has("pacc") || has("eacc") || has("soc mtr")) return "cpu";
    if (has("gpu")) return "gpu";
    if (has("nand")) return "ssd";
    if (has("battery")) return "battery";
    return std::nullopt;
}

}  // namespace velmora
