#include <algorithm>

#include "metrics/macos/system_metrics.hpp"

namespace velmora {

namespace {

constexpr double kGiB = 1024.0 * 1024.0 * 1024.0;

std::optional<double> usedBytes(HostCounters& host) {
    const auto pages = host.vmPages();
    if (!pages || host.physicalMemory() == 0) return std::nullopt;
    return static_cast<double>(pages->active + pages->wired + pages->compressor) *
           static_cast<double>(host.pageSize());
}

}  // namespace

std::optional<double> SystemMetrics::ramUsedPercent() {
    const auto used = usedBytes(host_);
    if (!used) return std::nullopt;
    return std::clamp(*used / static_cast<double>(host_.physicalMemory()) * 100.0, 0.0, 100.0);
}

std::optional<MemoryInfo> memoryInfo(HostCounters& host) {
    const auto used = usedBytes(host);
    if (!used) return std::nullopt;
    const auto physical = static_cast<double>(host.physicalMemory());
    MemoryInfo info{
        .usedPercent = std::min(*used / physical * 100.0, 100.0),
        .usedGB = *used / kGiB,
        .totalGB = physical / kGiB,
        .pressure = std::nullopt,
    };
    if (const auto level = host.memoryPressureLevel()) info.pressure = memoryPressureName(*level);
    return info;
}

std::optional<std::string> memoryPressureName(std::int32_t level) {
    switch (level) {
        case 1:
            return "Normal";
        case 2:
            return "Warning";
        case 4:
            return "Critical";
        default:
            return std::nullopt;
    }
}

}  // namespace velmora
