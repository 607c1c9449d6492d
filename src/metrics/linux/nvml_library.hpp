#pragma once

#include <memory>

#include "metrics/linux/gpu_vendor.hpp"

namespace velmora {

/// NVML loaded at run time with `dlopen`; nothing when the library or a GPU is missing.
std::unique_ptr<GpuVendorLibrary> loadNvml();

}  // namespace velmora
