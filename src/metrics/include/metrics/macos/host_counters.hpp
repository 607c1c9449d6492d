#pragma once

#include <cstdint>
#include <optional>
#include <vector>

#include "policy/thermal_state.hpp"

namespace velmora {

/// Tick counters of one processor (or the whole host), in the kernel's order.
struct CPUTicks {
    std::uint32_t user = 0;
    std::uint32_t system = 0;
    std::uint32_t idle = 0;
    std::uint32_t nice = 0;

    bool operator==(const CPUTicks&) const = default;
};

/// The pages counted as used memory.
struct VMPageCounts {
    std::uint64_t active = 0;
    std::uint64_t wired = 0;
    std::uint64_t compressor = 0;
};

/// The Mach host statistics and BSD figures the system metrics read.
class HostCounters {
  public:
    virtual ~HostCounters() = default;
    /// host_statistics HOST_CPU_LOAD_INFO.
    virtual std::optional<CPUTicks> cpuLoad() = 0;
    /// host_processor_info PROCESSOR_CPU_LOAD_INFO, one entry per logical CPU.
    virtual std::optional<std::vector<CPUTicks>> processorLoads() = 0;
    /// host_statistics64 HOST_VM_INFO64.
    virtual std::optional<VMPageCounts> vmPages() = 0;
    virtual std::uint64_t pageSize() = 0;
    virtual std::uint64_t physicalMemory() = 0;
    /// The one-minute value of getloadavg.
    virtual std::optional<double> loadAverage() = 0;
    /// sysctl "kern.memorystatus_vm_pressure_level".
    virtual std::optional<std::int32_t> memoryPressureLevel() = 0;
};

/// What the process information object says about the machine.
class ProcessInfo {
  public:
    virtual ~ProcessInfo() = default;
    virtual ThermalState thermalState() = 0;
    virtual bool lowPowerModeEnabled() = 0;
    virtual int activeProcessorCount() = 0;
};

}  // namespace velmora
