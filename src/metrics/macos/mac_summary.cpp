#include "metrics/macos/mac_backend.hpp"

namespace velmora {

namespace {

std::string keysOf(const SMC& smc, SMCClass cls) {
    std::string keys;
    for (const SMCTempKey& entry : smc.tempKeys()) {
        if (entry.cls != cls) continue;
        if (!keys.empty()) keys += ",";
        keys += entry.key;
    }
    return keys;
}

std::string readingSource(const std::optional<TempReading>& reading, const char* fallback) {
    return reading ? reading->source : std::string(fallback);
}

}  // namespace

std::string MacBackend::sensorSummary() {
    std::string summary;
    if (!smc_) {
        summary = "SMC: not available on this Mac";
    } else {
        summary = "SMC temperature keys: cpu=[" + keysOf(*smc_, SMCClass::cpu) + "] gpu=[" +
                  keysOf(*smc_, SMCClass::gpu) +
                  "] fans=" + std::to_string(readFans(smc_.get()).size());
    }
    summary += "; IOHID temperature sensors: ";
    summary += hid_.available() ? std::to_string(hid_.read().size()) + " reported"
                                : std::string("api not available");
    return summary;
}

MetricSources MacBackend::sources() const {
    const LiveInputs none;
    const LiveInputs& in = latest_ ? *latest_ : none;
    return MetricSources{
        .thermal = "ProcessInfo.thermalState",
        .cpuBusy = "host_statistics",
        .perCore = "host_processor_info",
        .load = "getloadavg",
        .memory = "host_statistics64",
        .memPressure = "sysctl kern.memorystatus_vm_pressure_level",
        .cpuTemp = readingSource(in.cpuTemp, "SMC T* keys / IOHID"),
        .gpuTemp = readingSource(in.gpuTemp, "SMC TG* keys / IOHID"),
        .batteryTemp = readingSource(in.batteryTemp, "AppleSmartBattery Temperature"),
        .gpuLoad = "IOAccelerator PerformanceStatistics",
        .fans = "SMC F*Ac",
        .power = in.power ? in.power->source : "SMC PSTR / AppleSmartBattery",
    };
}

}  // namespace velmora
