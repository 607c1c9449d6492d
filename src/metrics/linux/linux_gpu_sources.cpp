#include "metrics/linux/gpu_thermal.hpp"
#include "metrics/linux/linux_backend.hpp"
#include "metrics/number_text.hpp"

namespace velmora {

std::string LinuxBackend::gpuSourceId(std::size_t index) const {
    const std::string library = vendorGpu_ ? vendorGpu_->libraryName() : "GPU";
    const std::string name = index < vendorGpus_.size() ? vendorGpus_[index].name : "";
    return library + " GPU " + std::to_string(index) + (name.empty() ? "" : " " + name);
}

// A GPU's thresholds are known only once the library has been read; the sources follow them.
void LinuxBackend::refreshGpuThermalSources() {
    std::vector<GpuThresholds> thresholds;
    thresholds.reserve(vendorGpus_.size());
    for (const VendorGpu& gpu : vendorGpus_)
        thresholds.push_back(gpu.thresholds);
    if (thresholds == gpuThresholds_) return;
    gpuThresholds_ = std::move(thresholds);
    setThermalSources();
}

void LinuxBackend::addGpuThermalSources(std::vector<ThermalSourceDef>& sourceDefs) {
    for (std::size_t i = 0; i < gpuThresholds_.size(); ++i) {
        auto conditions = gpuConditions(gpuThresholds_[i]);
        if (conditions.empty()) continue;
        sourceDefs.push_back({gpuSourceId(i), std::move(conditions)});
        thermalSlots_.push_back({SlotKind::gpu, i});
        thermalNames_.push_back(gpuSensorSource(i));
    }
}

// The source a GPU's temperature is listed under (sampleVendorGpus).
std::string LinuxBackend::gpuSensorSource(std::size_t index) const {
    const std::string library = vendorGpu_ ? vendorGpu_->libraryName() : "GPU";
    return library + " " + (index < vendorGpus_.size() ? vendorGpus_[index].name : "");
}

std::optional<double> LinuxBackend::gpuCelsius(std::size_t index) const {
    return index < vendorGpus_.size() ? vendorGpus_[index].celsius : std::nullopt;
}

std::optional<std::string> LinuxBackend::throttledGpu() const {
    for (std::size_t i = 0; i < vendorGpus_.size(); ++i) {
        const auto& throttle = vendorGpus_[i].throttle;
        if (throttle && throttle->any()) return gpuSourceId(i);
    }
    return std::nullopt;
}

// The GPUs' own draw, summed: on a server without RAPL access or a battery it is the figure
// that says most about the heat being made.
std::optional<PowerReading> LinuxBackend::gpuPower() {
    std::optional<double> watts;
    int counted = 0;
    for (const VendorGpu& gpu : vendorGpus_) {
        if (!gpu.watts) continue;
        watts = watts.value_or(0.0) + *gpu.watts;
        ++counted;
    }
    if (!watts || !vendorGpu_) return std::nullopt;
    const std::string library = vendorGpu_->libraryName();
    const std::string label = counted == 1 ? "GPU power" : std::to_string(counted) + " GPUs' power";
    return PowerReading{*watts, label, library + " power usage"};
}

// One row per GPU: its temperature now, the thresholds it is judged by and what throttles it.
std::vector<DeviceSource> LinuxBackend::gpuSourceRows() const {
    std::vector<DeviceSource> rows;
    for (std::size_t i = 0; i < vendorGpus_.size(); ++i) {
        const VendorGpu& gpu = vendorGpus_[i];
        std::optional<std::string> value;
        if (gpu.celsius) value = fixedText(*gpu.celsius, 1) + " °C";
        std::string source = gpuSourceId(i) + "; " + gpuThresholdsText(gpu.thresholds);
        const auto conditions = gpuConditions(gpu.thresholds);
        if (!conditions.empty() && conditions.back().level == ThermalState::critical) {
            source += " (critical from " + fixedText(conditions.back().threshold, 0) + " °C)";
        }
        source += "; throttle: " + gpuThrottleText(gpu.throttle);
        if (gpu.watts) source += "; " + fixedText(*gpu.watts, 1) + " W";
        rows.push_back({"GPU " + std::to_string(i), value, std::move(source)});
    }
    return rows;
}

// Under the names the temperatures are listed by, so that a limit and its sensor's temperature
// share the label "source".
std::vector<ThermalLimit> LinuxBackend::thermalLimits() const {
    std::vector<ThermalLimit> limits;
    for (std::size_t i = 0; i < deriver_.sourceCount(); ++i) {
        const ThermalSourceDef& def = deriver_.sourceDef(i);
        const std::string& name = i < thermalNames_.size() ? thermalNames_[i] : def.id;
        for (const ThermalCondition& condition : def.conditions) {
            limits.push_back({name, std::string(thermalStateName(condition.level).value_or("")),
                              condition.threshold});
        }
    }
    return limits;
}

}  // namespace velmora
