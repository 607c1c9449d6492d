// A stand-in for NVIDIA's management library, exporting the few entry points the watchdog
// uses. Its GPUs are described by the file named in FAKE_NVML_CONFIG, re-read on every call so
// that a test can change a GPU between samples. One "key value" per line:
//   count N                   how many GPUs (default 1)
//   fail ENTRY_POINT          that entry point returns an error
//   gpuI.name TEXT            gpuI.temp C        gpuI.busy PERCENT     gpuI.power_mw MILLIWATTS
//   gpuI.slowdown C           gpuI.shutdown C    gpuI.gpu_max C        gpuI.memory_max C
//   gpuI.throttle MASK        (NVML's clocks throttle reason bits, decimal or 0x...)
//   gpuI.procs PID:SM ...     processes running on it and their SM share ("-" for no sample)
// A value that is not given reads as "not supported".
// Built with FAKE_NVML_BASIC it lacks the threshold, throttle, power and process entry points,
// as old drivers do.

#include <array>
#include <cstdlib>
#include <cstring>
#include <fstream>
#include <map>
#include <sstream>
#include <string>
#include <utility>
#include <vector>

namespace {

constexpr int kSuccess = 0;
constexpr int kInvalidArgument = 2;
constexpr int kNotSupported = 3;
constexpr int kNotFound = 6;
constexpr int kInsufficientSize = 7;
constexpr int kUnknownError = 999;

struct Device {
    int index;
};
std::array<Device, 8> devices{{{0}, {1}, {2}, {3}, {4}, {5}, {6}, {7}}};

std::map<std::string, std::string> config() {
    std::map<std::string, std::string> values;
    const char* path = std::getenv("FAKE_NVML_CONFIG");
    if (!path) return values;
    std::ifstream in(path);
    std::string line;
    while (std::getline(in, line)) {
        std::istringstream fields(line);
        std::string key;
        std::string value;
        fields >> key;
        std::getline(fields >> std::ws, value);
        if (key == "fail") {
            values["fail." + value] = "1";
        } else if (!key.empty()) {
            values[key] = value;
        }
    }
    return values;
}

bool failing(const std::map<std::string, std::string>& values, const char* entry) {
    return values.count(std::string("fail.") + entry) != 0;
}

const std::string* deviceValue(const std::map<std::string, std::string>& values, void* device,
                               const char* key) {
    const auto* d = static_cast<const Device*>(device);
    const auto found = values.find("gpu" + std::to_string(d->index) + "." + key);
    return found == values.end() ? nullptr : &found->second;
}

// The common shape of a per-device unsigned reading.
int readUnsigned(void* device, const char* entry, const char* key, unsigned int* out) {
    const auto values = config();
    if (failing(values, entry)) return kUnknownError;
    if (!device || !out) return kInvalidArgument;
    const std::string* text = deviceValue(values, device, key);
    if (!text) return kNotSupported;
    *out = static_cast<unsigned int>(std::strtoul(text->c_str(), nullptr, 0));
    return kSuccess;
}

// "77:60 88:-" as (pid, SM share or -1 for no sample).
[[maybe_unused]] std::vector<std::pair<unsigned int, long>> deviceProcesses(
    const std::map<std::string, std::string>& values, void* device) {
    std::vector<std::pair<unsigned int, long>> procs;
    const std::string* text = device ? deviceValue(values, device, "procs") : nullptr;
    if (!text) return procs;
    std::istringstream words(*text);
    std::string word;
    while (words >> word) {
        const auto colon = word.find(':');
        if (colon == std::string::npos) continue;
        const std::string share = word.substr(colon + 1);
        procs.emplace_back(static_cast<unsigned int>(std::stoul(word.substr(0, colon))),
                           share == "-" ? -1L : std::stol(share));
    }
    return procs;
}

}  // namespace

extern "C" {

struct FakeProcessInfo {
    unsigned int pid;
    unsigned long long usedGpuMemory;
    unsigned int gpuInstanceId;
    unsigned int computeInstanceId;
};

struct FakeProcessSample {
    unsigned int pid;
    unsigned long long timeStamp;
    unsigned int smUtil;
    unsigned int memUtil;
    unsigned int encUtil;
    unsigned int decUtil;
};

struct FakeUtilization {
    unsigned int gpu;
    unsigned int memory;
};

__attribute__((visibility("default"))) int nvmlInit_v2() {
    return failing(config(), "nvmlInit_v2") ? kUnknownError : kSuccess;
}

__attribute__((visibility("default"))) int nvmlShutdown() {
    return kSuccess;
}

__attribute__((visibility("default"))) int nvmlDeviceGetCount_v2(unsigned int* count) {
    const auto values = config();
    if (failing(values, "nvmlDeviceGetCount_v2")) return kUnknownError;
    const auto found = values.find("count");
    *count = found == values.end() ? 1U : static_cast<unsigned int>(std::stoul(found->second));
    return kSuccess;
}

__attribute__((visibility("default"))) int nvmlDeviceGetHandleByIndex_v2(unsigned int index,
                                                                         void** device) {
    if (failing(config(), "nvmlDeviceGetHandleByIndex_v2")) return kUnknownError;
    if (index >= devices.size()) return kInvalidArgument;
    *device = &devices.at(index);
    return kSuccess;
}

__attribute__((visibility("default"))) int nvmlDeviceGetName(void* device, char* name,
                                                             unsigned int length) {
    const auto values = config();
    if (failing(values, "nvmlDeviceGetName")) return kUnknownError;
    const std::string* text = deviceValue(values, device, "name");
    const std::string chosen = text ? *text : "Fake GPU";
    if (length == 0) return kInvalidArgument;
    std::strncpy(name, chosen.c_str(), length - 1);
    name[length - 1] = '\0';
    return kSuccess;
}

__attribute__((visibility("default"))) int nvmlDeviceGetTemperature(void* device, int sensor,
                                                                    unsigned int* celsius) {
    if (sensor != 0) return kInvalidArgument;
    return readUnsigned(device, "nvmlDeviceGetTemperature", "temp", celsius);
}

__attribute__((visibility("default"))) int nvmlDeviceGetUtilizationRates(void* device,
                                                                         FakeUtilization* rates) {
    unsigned int busy = 0;
    const int result = readUnsigned(device, "nvmlDeviceGetUtilizationRates", "busy", &busy);
    if (result == kSuccess) *rates = FakeUtilization{busy, 0};
    return result;
}

#ifndef FAKE_NVML_BASIC
__attribute__((visibility("default"))) int nvmlDeviceGetTemperatureThreshold(
    void* device, int which, unsigned int* celsius) {
    static const std::array<const char*, 4> keys{"shutdown", "slowdown", "memory_max", "gpu_max"};
    if (which < 0 || which >= static_cast<int>(keys.size())) return kInvalidArgument;
    return readUnsigned(device, "nvmlDeviceGetTemperatureThreshold",
                        keys.at(static_cast<std::size_t>(which)), celsius);
}

__attribute__((visibility("default"))) int nvmlDeviceGetCurrentClocksThrottleReasons(
    void* device, unsigned long long* reasons) {
    const auto values = config();
    if (failing(values, "nvmlDeviceGetCurrentClocksThrottleReasons")) return kUnknownError;
    const std::string* text = deviceValue(values, device, "throttle");
    *reasons = text ? std::strtoull(text->c_str(), nullptr, 0) : 0ULL;
    return kSuccess;
}

__attribute__((visibility("default"))) int nvmlDeviceGetPowerUsage(void* device,
                                                                   unsigned int* milliwatts) {
    return readUnsigned(device, "nvmlDeviceGetPowerUsage", "power_mw", milliwatts);
}

__attribute__((visibility("default"))) int nvmlDeviceGetComputeRunningProcesses_v3(
    void* device, unsigned int* count, FakeProcessInfo* infos) {
    const auto values = config();
    if (failing(values, "nvmlDeviceGetComputeRunningProcesses_v3")) return kUnknownError;
    const auto procs = deviceProcesses(values, device);
    if (!infos || *count < procs.size()) {
        *count = static_cast<unsigned int>(procs.size());
        return procs.empty() ? kSuccess : kInsufficientSize;
    }
    for (std::size_t i = 0; i < procs.size(); ++i)
        infos[i] = FakeProcessInfo{procs[i].first, 0, 0, 0};
    *count = static_cast<unsigned int>(procs.size());
    return kSuccess;
}

__attribute__((visibility("default"))) int nvmlDeviceGetProcessUtilization(
    void* device, FakeProcessSample* samples, unsigned int* count, unsigned long long) {
    const auto values = config();
    if (failing(values, "nvmlDeviceGetProcessUtilization")) return kUnknownError;
    std::vector<FakeProcessSample> made;
    for (const auto& [pid, share] : deviceProcesses(values, device)) {
        if (share >= 0) made.push_back({pid, 1, static_cast<unsigned int>(share), 0, 0, 0});
    }
    if (made.empty()) return kNotFound;
    if (!samples || *count < made.size()) {
        *count = static_cast<unsigned int>(made.size());
        return kInsufficientSize;
    }
    for (std::size_t i = 0; i < made.size(); ++i)
        samples[i] = made[i];
    *count = static_cast<unsigned int>(made.size());
    return kSuccess;
}
#endif

}  // extern "C"
