#include <map>

#include "metrics/linux/linux_backend.hpp"

namespace velmora {

namespace {

std::string counted(int n, const char* singular) {
    return std::to_string(n) + " " + singular + (n == 1 ? "" : "s");
}

std::string chipsText(const HwmonInventory& hwmon) {
    if (hwmon.chips.empty()) return "none";
    std::string text;
    for (const HwmonChip& chip : hwmon.chips) {
        if (!text.empty()) text += ", ";
        text += chip.name + " (";
        if (chip.temps > 0) text += counted(chip.temps, "temp");
        if (chip.temps > 0 && chip.fans > 0) text += ", ";
        if (chip.fans > 0) text += counted(chip.fans, "fan");
        text += ")";
    }
    return text;
}

std::string zonesText(const std::vector<ThermalZone>& zones) {
    if (zones.empty()) return "none";
    std::string names;
    std::size_t trips = 0;
    for (const ThermalZone& zone : zones) {
        names += (names.empty() ? "" : ", ") + zone.type;
        trips += zone.trips.size();
    }
    return std::to_string(zones.size()) + " (" + names + "), " +
           counted(static_cast<int>(trips), "trip point");
}

std::string joined(const std::vector<std::string>& names) {
    std::string text;
    for (const std::string& name : names)
        text += (text.empty() ? "" : ", ") + name;
    return text.empty() ? "none" : text;
}

std::string fansSource(const std::vector<HwmonFan>& fans) {
    if (fans.empty()) return "hwmon fanN_input (none found)";
    std::string source = fans.front().input.path();
    if (fans.size() > 1) source += " and " + std::to_string(fans.size() - 1) + " more";
    return source;
}

}  // namespace

std::string LinuxBackend::sensorSummary() {
    if (!discoveredAt_) discover(Timestamp::now(), sysfsFingerprint(root_));
    const std::size_t temps = deriver_.sourceCount();
    const std::size_t counters = inv_.throttleCounters.size();
    std::string summary = "hwmon: " + chipsText(inv_.hwmon);
    summary += "; thermal zones: " + zonesText(inv_.zones);
    summary += "; thermal state from: ";
    if (temps + counters == 0) {
        summary += "nothing (it stays Nominal)";
    } else {
        summary += counted(static_cast<int>(temps), "temperature") + " with limits, " +
                   counted(static_cast<int>(counters), "throttle counter");
    }
    std::vector<std::string> batteries;
    for (const BatteryFiles& battery : inv_.supplies.batteries)
        batteries.push_back(battery.name);
    summary += "; battery: " + joined(batteries);
    summary += "; AC: " + joined(inv_.supplies.acNames);
    summary += "; RAPL: " + (inv_.rapl.readable() ? inv_.rapl.sourceName().substr(5)
                                                  : std::string("not readable"));
    summary += "; GPU busy files: " + std::to_string(inv_.gpuBusy.size());
    summary += "; " + (vendorGpu_ ? vendorGpu_->libraryName() + ": loaded"
                                  : std::string("NVML: not loaded"));
    return summary;
}

MetricSources LinuxBackend::sources() const {
    auto or_ = [](const std::string& chosen, const std::string& fallback) {
        return chosen.empty() ? fallback : chosen;
    };
    std::string thermal = "derived from " + root_ + "/sys/class/thermal trip points and " + root_ +
                          "/sys/class/hwmon limits";
    if (!deriver_.drivingSource().empty()) thermal += "; set by " + deriver_.drivingSource();
    return MetricSources{
        .thermal = thermal,
        .cpuBusy = root_ + "/proc/stat",
        .perCore = root_ + "/proc/stat (cpuN lines)",
        .load = root_ + "/proc/loadavg",
        .memory = root_ + "/proc/meminfo",
        .memPressure = root_ + "/proc/pressure/memory",
        .cpuTemp = or_(chosen_.cpuTemp + chosen_.cpuTempNote,
                       "hwmon / thermal zones (no CPU sensor, CPU/SoC or ACPI zone found)"),
        .gpuTemp = or_(chosen_.gpuTemp, "hwmon / NVML (no GPU found)"),
        .batteryTemp = or_(chosen_.batteryTemp, "power_supply (no battery temp)"),
        .gpuLoad =
            inv_.gpuBusy.empty() ? "amdgpu gpu_busy_percent / NVML" : inv_.gpuBusy.front().path(),
        .fans = fansSource(inv_.hwmon.fans),
        .power =
            or_(chosen_.power, "RAPL energy_uj / power_supply / GPU hwmon / NVML (none readable)"),
        .devices = gpuSourceRows(),
        .powerFiles = chosen_.powerFiles,
    };
}

}  // namespace velmora
