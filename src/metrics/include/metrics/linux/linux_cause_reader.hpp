#pragma once

#include <functional>
#include <memory>
#include <string>

#include "metrics/heat_cause_tracker.hpp"
#include "metrics/linux/gpu_vendor.hpp"
#include "metrics/linux/process_scanner.hpp"
#include "metrics/linux/service_counters.hpp"

namespace velmora {

/// What uses a Linux machine: processes from /proc, units from the cgroup v2 tree, GPU
/// processes from the vendor library, all below one root.
class LinuxCauseReader final : public CauseReader {
  public:
    /// Loads the vendor library on the first scan; may return null (no GPU rows then).
    using LoadGpu = std::function<std::unique_ptr<GpuVendorLibrary>()>;

    explicit LinuxCauseReader(const std::string& root, LoadGpu loadGpu = {},
                              ProcessScanner::OpenAt openAt = {});

    void keepCounters(MonoTime now) override { services_.keep(now); }
    HeatCause scan(MonoTime windowStart, MonoTime now) override;
    void forget() override { processes_.forget(); }

  private:
    std::vector<ProcessShare> gpuRows();

    ProcessScanner processes_;
    ServiceCounters services_;
    LoadGpu loadGpu_;
    std::unique_ptr<GpuVendorLibrary> gpu_;
};

}  // namespace velmora
