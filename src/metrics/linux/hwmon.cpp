#include "metrics/linux/hwmon.hpp"

#include <algorithm>

#include "metrics/linux/sysfs_dir.hpp"
#include "metrics/linux/utf8_text.hpp"

namespace velmora {

namespace {

std::optional<double> millidegreesIn(const std::string& path) {
    const auto text = readSmallFile(path);
    const auto milli = text ? parseInteger(*text) : std::nullopt;
    if (!milli) return std::nullopt;
    return fromMillidegrees(*milli);
}

std::optional<double> numberIn(const std::string& path) {
    const auto text = readSmallFile(path);
    const auto value = text ? parseInteger(*text) : std::nullopt;
    if (!value) return std::nullopt;
    return static_cast<double>(*value);
}

std::string textIn(const std::string& path, std::string fallback) {
    const auto text = readSmallFile(path);
    if (!text || trimmed(*text).empty()) return fallback;
    return validUtf8(trimmed(*text));
}

HwmonLimits limitsOf(const std::string& base) {
    return HwmonLimits{
        .max = millidegreesIn(base + "_max"),
        .maxHyst = millidegreesIn(base + "_max_hyst"),
        .crit = millidegreesIn(base + "_crit"),
        .critHyst = millidegreesIn(base + "_crit_hyst"),
        .emergency = millidegreesIn(base + "_emergency"),
        .emergencyHyst = millidegreesIn(base + "_emergency_hyst"),
    };
}

// An input is kept only when it reads now, so a broken attribute cannot trigger a
// rediscovery every second.
std::optional<SysfsFile> openReadable(const std::string& path) {
    auto file = SysfsFile::open(path);
    if (!file || !file->readInteger()) return std::nullopt;
    return file;
}

void addTemps(HwmonInventory& inventory, HwmonChip& chip, const std::string& dir) {
    const SensorClass cls = classifyHwmonChip(chip.name);
    const std::size_t first = inventory.temps.size();
    for (const int n : numberedFiles(dir, "temp", "_input")) {
        const std::string base = dir + "/temp" + std::to_string(n);
        auto input = openReadable(base + "_input");
        if (!input) continue;
        std::string label = textIn(base + "_label", "temp" + std::to_string(n));
        std::string name = chip.name + " " + label;
        std::string source = "hwmon " + name;
        inventory.temps.push_back({chip.name, std::move(label), cls, true, std::move(*input),
                                   limitsOf(base), std::move(name), std::move(source)});
        ++chip.temps;
    }
    const auto temps = std::span(inventory.temps).subspan(first);
    const bool hasTdie = std::any_of(temps.begin(), temps.end(),
                                     [](const HwmonTemp& t) { return t.label == "Tdie"; });
    for (HwmonTemp& temp : temps) {
        if (hasTdie && temp.label == "Tctl") temp.representsClass = false;
    }
}

void addFans(HwmonInventory& inventory, HwmonChip& chip, const std::string& dir) {
    for (const int n : numberedFiles(dir, "fan", "_input")) {
        const std::string base = dir + "/fan" + std::to_string(n);
        auto input = openReadable(base + "_input");
        if (!input) continue;
        inventory.fans.push_back(
            {chip.name, std::move(*input), numberIn(base + "_min"), numberIn(base + "_max")});
        ++chip.fans;
    }
}

// Old drivers keep their attributes one level down, in the device directory.
std::string attributeDir(const std::string& dir) {
    if (readSmallFile(dir + "/name")) return dir;
    if (readSmallFile(dir + "/device/name")) return dir + "/device";
    return dir;
}

}  // namespace

HwmonInventory discoverHwmon(const std::string& root) {
    HwmonInventory inventory;
    const std::string classDir = root + "/sys/class/hwmon";
    for (const std::string& entry : listEntries(classDir, "hwmon")) {
        const std::string dir = attributeDir(childPath(classDir, entry));
        HwmonChip chip{dir, textIn(dir + "/name", entry), 0, 0};
        addTemps(inventory, chip, dir);
        addFans(inventory, chip, dir);
        if (chip.temps > 0 || chip.fans > 0) inventory.chips.push_back(std::move(chip));
    }
    return inventory;
}

}  // namespace velmora
