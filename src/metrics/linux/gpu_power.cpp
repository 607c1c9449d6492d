#include "metrics/linux/gpu_power.hpp"

#include "metrics/linux/sensor_class.hpp"
#include "metrics/linux/sysfs_dir.hpp"
#include "metrics/linux/utf8_text.hpp"

namespace velmora {

namespace {

// Far above any card's board power; anything larger is a misread.
constexpr double kMaxGpuWatts = 2000.0;

std::string attributeText(const std::string& path) {
    const auto text = readSmallFile(path);
    return text ? validUtf8(trimmed(*text)) : std::string();
}

std::optional<GpuPowerFile> powerFileIn(const std::string& dir, const std::string& chip) {
    for (const char* name : {"power1_average", "power1_input"}) {
        if (auto file = SysfsFile::openReadable(childPath(dir, name))) {
            std::string label = attributeText(childPath(dir, "power1_label"));
            std::string source = "hwmon " + chip;
            source.append(" ").append(label.empty() ? name : label);
            return GpuPowerFile{std::move(*file), std::move(source)};
        }
    }
    return std::nullopt;
}

}  // namespace

std::vector<GpuPowerFile> discoverGpuPower(const std::string& root) {
    std::vector<GpuPowerFile> files;
    const std::string classDir = root + "/sys/class/hwmon";
    for (const std::string& entry : listEntries(classDir, "hwmon")) {
        std::string dir = childPath(classDir, entry);
        std::string chip = attributeText(childPath(dir, "name"));
        // Old drivers keep their attributes one level down, in the device directory.
        if (chip.empty()) {
            dir = childPath(dir, "device");
            chip = attributeText(childPath(dir, "name"));
        }
        if (classifyHwmonChip(chip) != SensorClass::gpu) continue;
        if (auto file = powerFileIn(dir, chip)) files.push_back(std::move(*file));
    }
    return files;
}

std::optional<PowerReading> gpuPowerReading(long long microwatts, const std::string& source) {
    const double watts = static_cast<double>(microwatts) / 1'000'000.0;
    // Drivers print 0 where the card keeps no average, so 0 is no figure rather than 0 W.
    if (!(watts > 0.0 && watts < kMaxGpuWatts)) return std::nullopt;
    return PowerReading{.watts = watts, .label = "GPU power", .source = source};
}

}  // namespace velmora
