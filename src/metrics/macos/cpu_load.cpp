#include <algorithm>

#include "metrics/macos/system_metrics.hpp"

namespace velmora {

std::optional<double> busyPercent(const CPUTicks& previous, const CPUTicks& current) {
    // Unsigned subtraction wraps, as the kernel's 32-bit counters do.
    const std::uint64_t user = current.user - previous.user;
    const std::uint64_t system = current.system - previous.system;
    const std::uint64_t idle = current.idle - previous.idle;
    const std::uint64_t nice = current.nice - previous.nice;
    const std::uint64_t total = user + system + idle + nice;
    if (total == 0) return std::nullopt;
    const double busy =
        static_cast<double>(user + system + nice) / static_cast<double>(total) * 100.0;
    return std::clamp(busy, 0.0, 100.0);
}

std::optional<double> SystemMetrics::cpuBusyPercent() {
    const auto ticks = host_.cpuLoad();
    if (!ticks) return std::nullopt;
    std::optional<double> busy;
    if (lastTicks_) busy = busyPercent(*lastTicks_, *ticks);
    lastTicks_ = ticks;
    return busy;
}

std::optional<std::vector<double>> PerCoreCPU::sample() {
    auto current = host_.processorLoads();
    if (!current) return std::nullopt;
    std::optional<std::vector<double>> loads;
    if (last_ && last_->size() == current->size()) {
        loads.emplace();
        for (std::size_t i = 0; i < current->size(); ++i) {
            // A processor with no ticks in between counts as idle.
            loads->push_back(busyPercent((*last_)[i], (*current)[i]).value_or(0.0));
        }
    }
    last_ = std::move(current);
    return loads;
}

}  // namespace velmora
