#import <Foundation/Foundation.h>

#include <mach/mach.h>
#include <stdlib.h>
#include <sys/sysctl.h>
#include <unistd.h>

#include "metrics/macos/apple_ports.hpp"

namespace velmora {

namespace {

CPUTicks ticksOf(const integer_t* states) {
    return CPUTicks{static_cast<std::uint32_t>(states[CPU_STATE_USER]),
                    static_cast<std::uint32_t>(states[CPU_STATE_SYSTEM]),
                    static_cast<std::uint32_t>(states[CPU_STATE_IDLE]),
                    static_cast<std::uint32_t>(states[CPU_STATE_NICE])};
}

class AppleHostCounters final : public HostCounters {
  public:
    std::optional<CPUTicks> cpuLoad() override {
        host_cpu_load_info_data_t info{};
        mach_msg_type_number_t count = HOST_CPU_LOAD_INFO_COUNT;
        if (host_statistics(mach_host_self(), HOST_CPU_LOAD_INFO,
                            reinterpret_cast<host_info_t>(&info), &count) != KERN_SUCCESS) {
            return std::nullopt;
        }
        return ticksOf(reinterpret_cast<const integer_t*>(info.cpu_ticks));
    }

    std::optional<std::vector<CPUTicks>> processorLoads() override {
        natural_t processors = 0;
        processor_info_array_t info = nullptr;
        mach_msg_type_number_t count = 0;
        if (host_processor_info(mach_host_self(), PROCESSOR_CPU_LOAD_INFO, &processors, &info,
                                &count) != KERN_SUCCESS ||
            info == nullptr) {
            return std::nullopt;
        }
        std::vector<CPUTicks> loads;
        for (natural_t i = 0; i < processors; ++i)
            loads.push_back(ticksOf(info + CPU_STATE_MAX * i));
        vm_deallocate(mach_task_self(), reinterpret_cast<vm_address_t>(info),
                      count * sizeof(integer_t));
        return loads;
    }

    std::optional<VMPageCounts> vmPages() override {
        vm_statistics64_data_t vm{};
        mach_msg_type_number_t count = HOST_VM_INFO64_COUNT;
        if (host_statistics64(mach_host_self(), HOST_VM_INFO64,
                              reinterpret_cast<host_info64_t>(&vm), &count) != KERN_SUCCESS) {
            return std::nullopt;
        }
        return VMPageCounts{vm.active_count, vm.wire_count, vm.compressor_page_count};
    }

    std::uint64_t pageSize() override { return static_cast<std::uint64_t>(sysconf(_SC_PAGESIZE)); }

    std::uint64_t physicalMemory() override { return NSProcessInfo.processInfo.physicalMemory; }

    std::optional<double> loadAverage() override {
        double loads[3] = {0, 0, 0};
        if (getloadavg(loads, 3) < 1) return std::nullopt;
        return loads[0];
    }

    std::optional<std::int32_t> memoryPressureLevel() override {
        std::int32_t level = 0;
        size_t size = sizeof level;
        if (sysctlbyname("kern.memorystatus_vm_pressure_level", &level, &size, nullptr, 0) != 0) {
            return std::nullopt;
        }
        return level;
    }
};

class AppleProcessInfo final : public ProcessInfo {
  public:
    ThermalState thermalState() override {
        return static_cast<ThermalState>(NSProcessInfo.processInfo.thermalState);
    }
    bool lowPowerModeEnabled() override { return NSProcessInfo.processInfo.isLowPowerModeEnabled; }
    int activeProcessorCount() override {
        return static_cast<int>(NSProcessInfo.processInfo.activeProcessorCount);
    }
};

}  // namespace

std::unique_ptr<HostCounters> makeAppleHostCounters() {
    return std::make_unique<AppleHostCounters>();
}

std::unique_ptr<ProcessInfo> makeAppleProcessInfo() {
    return std::make_unique<AppleProcessInfo>();
}

}  // namespace velmora
