#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <vector>

#include "metrics/macos/host_counters.hpp"
#include "metrics/macos/registry.hpp"
#include "metrics/macos/smc.hpp"
#include "metrics/system_records.hpp"

namespace velmora {

/// Whole-machine CPU load from the host's tick counters, RAM use and the load average.
class SystemMetrics {
  public:
    explicit SystemMetrics(HostCounters& host) : host_(host) {}

    /// Busy share of the ticks since the previous call; nothing on the first call or when no
    /// tick passed.
    std::optional<double> cpuBusyPercent();
    std::optional<double> ramUsedPercent();
    std::optional<double> loadAverage() { return host_.loadAverage(); }

  private:
    HostCounters& host_;
    std::optional<CPUTicks> lastTicks_;
};

/// Per-processor load between two calls; nothing when the processor count changed.
class PerCoreCPU {
  public:
    explicit PerCoreCPU(HostCounters& host) : host_(host) {}
    std::optional<std::vector<double>> sample();

  private:
    HostCounters& host_;
    std::optional<std::vector<CPUTicks>> last_;
};

/// Busy share between two tick readings with wrapping 32-bit deltas; nothing for no ticks.
std::optional<double> busyPercent(const CPUTicks& previous, const CPUTicks& current);

/// The busiest accelerator's utilisation, 0…100.
std::optional<double> gpuUtilizationPercent(IORegistry& registry);

std::optional<MemoryInfo> memoryInfo(HostCounters& host);
/// 1 "Normal", 2 "Warning", 4 "Critical"; any other level has no name.
std::optional<std::string> memoryPressureName(std::int32_t level);

/// At most eight fans from the SMC's F*Ac/Mn/Mx keys.
std::vector<FanReading> readFans(SMC* smc);

std::optional<BatteryInfo> batteryInfo(IORegistry& registry);
/// The SMC's system power, else the battery's own figure.
std::optional<PowerReading> powerReading(SMC* smc, const std::optional<BatteryInfo>& battery);

}  // namespace velmora
