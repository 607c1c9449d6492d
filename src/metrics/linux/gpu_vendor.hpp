#pragma once

#include <optional>
#include <string>
#include <vector>

namespace velmora {

/// One discrete GPU as its vendor library reports it.
struct VendorGpu {
    std::string name;
    std::optional<double> celsius;
    std::optional<double> busyPercent;
};

/// A vendor management library (NVIDIA's NVML); absent when the library is not installed.
class GpuVendorLibrary {
  public:
    virtual ~GpuVendorLibrary() = default;
    virtual std::string libraryName() const = 0;
    virtual std::vector<VendorGpu> read() = 0;
};

}  // namespace velmora
