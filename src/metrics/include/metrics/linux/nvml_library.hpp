#pragma once

#include <memory>

#include "metrics/linux/gpu_vendor.hpp"

namespace velmora {

/// NVML loaded at run time with `dlopen`; nothing when the library or a GPU is missing.
/// `path` is the library's file name (another one in tests).
std::unique_ptr<GpuVendorLibrary> loadNvml(const char* path = "libnvidia-ml.so.1");

}  // namespace velmora
