#include "metrics/linux/nvml_library.hpp"

#include <dlfcn.h>

#include <algorithm>
#include <array>
#include <map>

namespace velmora {

namespace {

// The few NVML entry points used, declared from the library's documented C interface.
using NvmlDevice = struct NvmlDeviceOpaque*;
struct NvmlUtilization {
    unsigned int gpu;
    unsigned int memory;
};
using InitFn = int (*)();
using ShutdownFn = int (*)();
using CountFn = int (*)(unsigned int*);
using HandleFn = int (*)(unsigned int, NvmlDevice*);
using TemperatureFn = int (*)(NvmlDevice, int, unsigned int*);
using UtilizationFn = int (*)(NvmlDevice, NvmlUtilization*);
using NameFn = int (*)(NvmlDevice, char*, unsigned int);
using ThresholdFn = int (*)(NvmlDevice, int, unsigned int*);
using ThrottleFn = int (*)(NvmlDevice, unsigned long long*);
using PowerFn = int (*)(NvmlDevice, unsigned int*);
struct NvmlProcessInfo {
    unsigned int pid;
    unsigned long long usedGpuMemory;
    unsigned int gpuInstanceId;
    unsigned int computeInstanceId;
};
struct NvmlProcessSample {
    unsigned int pid;
    unsigned long long timeStamp;
    unsigned int smUtil;
    unsigned int memUtil;
    unsigned int encUtil;
    unsigned int decUtil;
};
using ProcessListFn = int (*)(NvmlDevice, unsigned int*, NvmlProcessInfo*);
using ProcessSamplesFn = int (*)(NvmlDevice, NvmlProcessSample*, unsigned int*, unsigned long long);

constexpr int kSuccess = 0;
constexpr int kInsufficientSize = 7;
// Room for processes that start between asking how many there are and listing them.
constexpr unsigned int kListSlack = 8;
constexpr int kGpuTemperature = 0;
// nvmlTemperatureThresholds_t
constexpr int kThresholdShutdown = 0;
constexpr int kThresholdSlowdown = 1;
constexpr int kThresholdMemoryMax = 2;
constexpr int kThresholdGpuMax = 3;
// nvmlClocksThrottleReasons bits
constexpr unsigned long long kSwThermalSlowdown = 0x20ULL;
constexpr unsigned long long kHwThermalSlowdown = 0x40ULL;
constexpr unsigned long long kHwPowerBrake = 0x80ULL;

template <typename Fn>
Fn symbol(void* handle, const char* name) {
    return reinterpret_cast<Fn>(dlsym(handle, name));
}

class NvmlLibrary final : public GpuVendorLibrary {
  public:
    explicit NvmlLibrary(void* handle) : handle_(handle) {
        shutdown_ = symbol<ShutdownFn>(handle, "nvmlShutdown");
        temperature_ = symbol<TemperatureFn>(handle, "nvmlDeviceGetTemperature");
        utilization_ = symbol<UtilizationFn>(handle, "nvmlDeviceGetUtilizationRates");
        name_ = symbol<NameFn>(handle, "nvmlDeviceGetName");
        threshold_ = symbol<ThresholdFn>(handle, "nvmlDeviceGetTemperatureThreshold");
        throttle_ = symbol<ThrottleFn>(handle, "nvmlDeviceGetCurrentClocksThrottleReasons");
        power_ = symbol<PowerFn>(handle, "nvmlDeviceGetPowerUsage");
        computeProcesses_ =
            symbol<ProcessListFn>(handle, "nvmlDeviceGetComputeRunningProcesses_v3");
        graphicsProcesses_ =
            symbol<ProcessListFn>(handle, "nvmlDeviceGetGraphicsRunningProcesses_v3");
        processSamples_ = symbol<ProcessSamplesFn>(handle, "nvmlDeviceGetProcessUtilization");
    }
    ~NvmlLibrary() override {
        if (shutdown_) shutdown_();
        dlclose(handle_);
    }
    NvmlLibrary(const NvmlLibrary&) = delete;
    NvmlLibrary& operator=(const NvmlLibrary&) = delete;

    bool findDevices() {
        const auto count = symbol<CountFn>(handle_, "nvmlDeviceGetCount_v2");
        const auto byIndex = symbol<HandleFn>(handle_, "nvmlDeviceGetHandleByIndex_v2");
        unsigned int n = 0;
        if (!count || !byIndex || count(&n) != kSuccess) return false;
        for (unsigned int i = 0; i < n; ++i) {
            NvmlDevice device = nullptr;
            if (byIndex(i, &device) == kSuccess) {
                devices_.push_back(device);
                thresholds_.push_back(readThresholds(device));
            }
        }
        return !devices_.empty();
    }

    std::string libraryName() const override { return "NVML"; }

    std::vector<VendorGpu> read() override {
        std::vector<VendorGpu> gpus;
        for (std::size_t i = 0; i < devices_.size(); ++i) {
            gpus.push_back(readDevice(devices_[i]));
            gpus.back().thresholds = thresholds_[i];
        }
        return gpus;
    }

    std::vector<GpuProcessUse> processes() override {
        std::map<unsigned int, std::optional<double>> found;
        for (NvmlDevice device : devices_) {
            for (const auto list : {computeProcesses_, graphicsProcesses_}) {
                for (const unsigned int pid : listProcesses(list, device))
                    found.try_emplace(pid);
            }
            for (const auto& [pid, percent] : processShares(device)) {
                auto& kept = found[pid];
                kept = std::max(kept.value_or(0.0), percent);
            }
        }
        std::vector<GpuProcessUse> uses;
        uses.reserve(found.size());
        for (const auto& [pid, percent] : found)
            uses.push_back(GpuProcessUse{pid, percent});
        return uses;
    }

  private:
    static std::vector<unsigned int> listProcesses(ProcessListFn list, NvmlDevice device) {
        std::vector<unsigned int> pids;
        unsigned int count = 0;
        if (!list) return pids;
        const int asked = list(device, &count, nullptr);
        if (asked != kSuccess && asked != kInsufficientSize) return pids;
        if (count == 0) return pids;
        std::vector<NvmlProcessInfo> infos(count + kListSlack);
        count = static_cast<unsigned int>(infos.size());
        if (list(device, &count, infos.data()) != kSuccess) return pids;
        for (unsigned int i = 0; i < count && i < infos.size(); ++i)
            pids.push_back(infos[i].pid);
        return pids;
    }

    // The mean SM share of each process over the samples the driver still holds.
    std::map<unsigned int, double> processShares(NvmlDevice device) const {
        std::map<unsigned int, double> shares;
        unsigned int count = 0;
        if (!processSamples_) return shares;
        if (processSamples_(device, nullptr, &count, 0) != kInsufficientSize || count == 0) {
            return shares;
        }
        std::vector<NvmlProcessSample> samples(count + kListSlack);
        count = static_cast<unsigned int>(samples.size());
        if (processSamples_(device, samples.data(), &count, 0) != kSuccess) return shares;
        std::map<unsigned int, std::pair<double, int>> sums;
        for (unsigned int i = 0; i < count && i < samples.size(); ++i) {
            auto& [sum, n] = sums[samples[i].pid];
            sum += samples[i].smUtil;
            ++n;
        }
        for (const auto& [pid, sum] : sums)
            shares[pid] = std::min(100.0, sum.first / sum.second);
        return shares;
    }

    VendorGpu readDevice(NvmlDevice device) const {
        VendorGpu gpu{"NVIDIA GPU", std::nullopt, std::nullopt};
        std::array<char, 96> name{};
        if (name_ && name_(device, name.data(), name.size()) == kSuccess) gpu.name = name.data();
        unsigned int celsius = 0;
        if (temperature_ && temperature_(device, kGpuTemperature, &celsius) == kSuccess) {
            gpu.celsius = celsius;
        }
        NvmlUtilization rates{};
        if (utilization_ && utilization_(device, &rates) == kSuccess) gpu.busyPercent = rates.gpu;
        unsigned long long reasons = 0;
        if (throttle_ && throttle_(device, &reasons) == kSuccess) {
            gpu.throttle =
                GpuThrottle{(reasons & kHwThermalSlowdown) != 0,
                            (reasons & kSwThermalSlowdown) != 0, (reasons & kHwPowerBrake) != 0};
        }
        unsigned int milliwatts = 0;
        if (power_ && power_(device, &milliwatts) == kSuccess) gpu.watts = milliwatts / 1000.0;
        return gpu;
    }

    // The firmware's thresholds do not change while the driver runs: read once per device.
    GpuThresholds readThresholds(NvmlDevice device) const {
        auto read = [&](int which) -> std::optional<double> {
            unsigned int celsius = 0;
            if (!threshold_ || threshold_(device, which, &celsius) != kSuccess) return std::nullopt;
            return celsius;
        };
        return GpuThresholds{read(kThresholdSlowdown), read(kThresholdShutdown),
                             read(kThresholdGpuMax), read(kThresholdMemoryMax)};
    }

    void* handle_;
    ShutdownFn shutdown_ = nullptr;
    TemperatureFn temperature_ = nullptr;
    UtilizationFn utilization_ = nullptr;
    NameFn name_ = nullptr;
    ThresholdFn threshold_ = nullptr;
    ThrottleFn throttle_ = nullptr;
    PowerFn power_ = nullptr;
    ProcessListFn computeProcesses_ = nullptr;
    ProcessListFn graphicsProcesses_ = nullptr;
    ProcessSamplesFn processSamples_ = nullptr;
    std::vector<NvmlDevice> devices_;
    std::vector<GpuThresholds> thresholds_;
};

}  // namespace

std::unique_ptr<GpuVendorLibrary> loadNvml(const char* path) {
    void* handle = dlopen(path, RTLD_NOW | RTLD_LOCAL);
    if (!handle) return nullptr;
    const auto init = symbol<InitFn>(handle, "nvmlInit_v2");
    if (!init || init() != kSuccess) {
        dlclose(handle);
        return nullptr;
    }
    auto library = std::make_unique<NvmlLibrary>(handle);
    if (!library->findDevices()) return nullptr;
    return library;
}

}  // namespace velmora
