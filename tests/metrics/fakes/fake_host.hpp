#pragma once

#include <memory>
#include <vector>

#include "metrics/macos/host_counters.hpp"

namespace velmora::testing {

/// Host counters that tests set between calls.
struct FakeHostState {
    std::optional<CPUTicks> cpu;
    std::optional<std::vector<CPUTicks>> processors;
    std::optional<VMPageCounts> pages;
    std::uint64_t pageSize = 16384;
    std::uint64_t physical = 0;
    std::optional<double> load;
    std::optional<std::int32_t> pressure;
    ThermalState thermal = ThermalState::nominal;
    bool lowPower = false;
    int activeProcessors = 8;
};

class FakeHost final : public HostCounters {
  public:
    explicit FakeHost(std::shared_ptr<FakeHostState> state) : s_(std::move(state)) {}
    std::optional<CPUTicks> cpuLoad() override { return s_->cpu; }
    std::optional<std::vector<CPUTicks>> processorLoads() override { return s_->processors; }
    std::optional<VMPageCounts> vmPages() override { return s_->pages; }
    std::uint64_t pageSize() override { return s_->pageSize; }
    std::uint64_t physicalMemory() override { return s_->physical; }
    std::optional<double> loadAverage() override { return s_->load; }
    std::optional<std::int32_t> memoryPressureLevel() override { return s_->pressure; }

  private:
    std::shared_ptr<FakeHostState> s_;
};

class FakeProcessInfo final : public ProcessInfo {
  public:
    explicit FakeProcessInfo(std::shared_ptr<FakeHostState> state) : s_(std::move(state)) {}
    ThermalState thermalState() override { return s_->thermal; }
    bool lowPowerModeEnabled() override { return s_->lowPower; }
    int activeProcessorCount() override { return s_->activeProcessors; }

  private:
    std::shared_ptr<FakeHostState> s_;
};

}  // namespace velmora::testing
