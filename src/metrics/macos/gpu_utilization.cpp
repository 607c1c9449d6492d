#include <array>
#include <string_view>

#include "metrics/macos/system_metrics.hpp"

namespace velmora {

namespace {

// Tried in this order; the last one counts in units of 1/10,000,000.
constexpr std::array<std::string_view, 3> kStatisticsKeys{"Device Utilization %", "GPU Activity(%)",
                                                          "GPU Core Utilization"};

std::optional<double> utilizationOf(const RegistryEntry& accelerator) {
    const auto stats = accelerator.property("PerformanceStatistics");
    const auto* dict = stats ? std::get_if<RegistryDictionary>(&*stats) : nullptr;
    if (!dict) return std::nullopt;
    for (const std::string_view key : kStatisticsKeys) {
        const auto found = dict->find(key);
        if (found == dict->end()) continue;
        const auto value = registryNumber(found->second);
        if (!value) continue;
        return key == "GPU Core Utilization" ? *value / 10'000'000.0 : *value;
    }
    return std::nullopt;
}

}  // namespace

std::optional<double> gpuUtilizationPercent(IORegistry& registry) {
    const auto accelerators = registry.allMatching("IOAccelerator");
    if (!accelerators) return std::nullopt;
    std::optional<double> busiest;
    for (const auto& accelerator : *accelerators) {
        const auto value = utilizationOf(*accelerator);
        if (!value || *value < 0.0 || *value > 100.0) continue;
        if (!busiest || *value > *busiest) busiest = value;
    }
    return busiest;
}

}  // namespace velmora
