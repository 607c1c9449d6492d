#include "metrics/linux/batteries.hpp"
#include "metrics/linux/linux_backend.hpp"

namespace velmora {

namespace {

const std::optional<SysfsFile>& currentFileOf(const BatteryFiles& files) {
    return files.currentNow ? files.currentNow : files.powerNow;
}

}  // namespace

BatteryRaw LinuxBackend::readBattery(const BatteryFiles& files) {
    auto number = [&](const std::optional<SysfsFile>& f) {
        return f ? readInteger(*f) : std::nullopt;
    };
    BatteryRaw raw{number(files.capacity),   std::nullopt,
                   number(files.currentNow), number(files.powerNow),
                   number(files.voltageNow), number(files.energyNow),
                   number(files.energyFull), number(files.chargeNow),
                   number(files.chargeFull)};
    if (files.status) {
        raw.status = files.status->readLine();
        if (!raw.status) readFailed_ = true;
    }
    return raw;
}

void LinuxBackend::sampleBattery(LiveInputs& in) {
    std::optional<bool> acOnline;
    for (const SysfsFile& online : inv_.supplies.acOnline) {
        if (const auto value = readInteger(online)) {
            acOnline = acOnline.value_or(false) || *value == 1;
        }
    }
    for (const BatteryFiles& files : inv_.supplies.batteries) {
        BatteryPack pack =
            batteryPackFromRaw(files.name, readBattery(files), files.voltageMinDesign);
        pack.info.onAC = acOnline;
        in.batteries.push_back(std::move(pack));
        const auto tenths = files.temp ? readInteger(*files.temp) : std::nullopt;
        if (const auto temp = batteryTempFromTenths(tenths, files.name)) {
            in.sensors.push_back({files.name, temp->celsius, temp->source});
            // The first pack's temperature is the battery's.
            if (in.batteries.size() == 1) {
                in.batteryTemp = temp;
                chosen_.batteryTemp = files.temp->path();
            }
        }
    }
    if (!in.batteries.empty()) in.battery = combineBatteries(in.batteries, acOnline);
}

void LinuxBackend::addPowerSource(LiveInputs& in, const PowerReading& reading,
                                  const std::string& file) {
    in.powerSources.push_back(reading);
    chosen_.powerFiles.push_back(file);
}

// The headline figure is the CPU package's when RAPL is readable, else the batteries', else a
// GPU's; every figure found is listed beside it.
void LinuxBackend::samplePower(LiveInputs& in, Timestamp now) {
    in.powerSources.clear();
    chosen_.powerFiles.clear();
    chosen_.power.clear();
    const auto rapl = inv_.rapl.sample(now, readFailed_);
    if (rapl) addPowerSource(in, *rapl, inv_.rapl.firstPath());
    std::optional<std::size_t> firstGpu;
    for (const GpuPowerFile& gpu : inv_.gpuPower) {
        const auto microwatts = readInteger(gpu.file);
        const auto reading = microwatts ? gpuPowerReading(*microwatts, gpu.source) : std::nullopt;
        if (!reading) continue;
        if (!firstGpu) firstGpu = in.powerSources.size();
        addPowerSource(in, *reading, gpu.file.path());
    }
    // NVIDIA GPUs report their draw through NVML rather than hwmon.
    if (auto nvml = gpuPower()) {
        if (!firstGpu) firstGpu = in.powerSources.size();
        const std::string source = nvml->source;
        addPowerSource(in, *nvml, source);
    }
    std::vector<PowerReading> packPowers;
    std::string firstPackFile;
    for (std::size_t i = 0; i < in.batteries.size() && i < inv_.supplies.batteries.size(); ++i) {
        const auto reading = batteryPower(in.batteries[i].info, in.batteries[i].source);
        if (!reading) continue;
        const auto& file = currentFileOf(inv_.supplies.batteries[i]);
        if (firstPackFile.empty() && file) firstPackFile = file->path();
        addPowerSource(in, *reading, file ? file->path() : std::string());
        packPowers.push_back(*reading);
    }
    if (rapl) {
        in.power = rapl;
        chosen_.power = inv_.rapl.firstPath();
    } else if (auto battery = combinedBatteryPower(packPowers)) {
        in.power = std::move(battery);
        chosen_.power = firstPackFile;
    } else if (firstGpu) {
        in.power = in.powerSources[*firstGpu];
        chosen_.power = chosen_.powerFiles[*firstGpu];
    }
}

}  // namespace velmora
