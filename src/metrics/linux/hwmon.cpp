#include "metrics/linux/hwmon.hpp"

#include <algorithm>
#include <span>
#include <tuple>

#include "metrics/linux/file_pool.hpp"
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

// One input found at discovery, before it is decided whether it is kept open.
struct Candidate {
    std::size_t chip = 0;
    int number = 0;
    bool fan = false;
    std::string path;
    std::optional<double> value;
};

// Opens (or takes from the pool) an input that reads now, so that a broken attribute cannot
// trigger a rediscovery every second. One failed read is retried once.
std::optional<SysfsFile> openReadable(const std::string& path, FilePool* pool) {
    if (pool != nullptr) {
        if (auto kept = pool->take(path)) return kept;
    }
    auto file = SysfsFile::open(path);
    if (!file || (!file->readInteger() && !file->readInteger())) return std::nullopt;
    return file;
}

// The input's value now, reading through a pooled descriptor when there is one and otherwise
// opening and closing it again, so that discovery holds no more than one extra descriptor.
std::optional<double> probe(const std::string& path, const FilePool& pool) {
    const SysfsFile* kept = pool.find(path);
    std::optional<SysfsFile> fresh;
    if (kept == nullptr) {
        fresh = SysfsFile::open(path);
        if (!fresh) return std::nullopt;
        kept = &*fresh;
    }
    auto value = kept->readInteger();
    if (!value) value = kept->readInteger();
    if (!value) return std::nullopt;
    return static_cast<double>(*value);
}

void addCandidates(std::vector<Candidate>& found, std::size_t chip, const std::string& dir,
                   std::string_view stem, bool fan) {
    for (const int n : numberedFiles(dir, stem, "_input")) {
        found.push_back({chip, n, fan, dir + "/" + std::string(stem) + std::to_string(n) + "_input",
                         std::nullopt});
    }
}

// Emergency limits first, then the hottest; fans after every temperature; discovery order
// among equals.
std::vector<std::size_t> keepOrder(const std::vector<Candidate>& found,
                                   const std::vector<bool>& emergency) {
    std::vector<std::size_t> order(found.size());
    for (std::size_t i = 0; i < order.size(); ++i)
        order[i] = i;
    auto rank = [&](std::size_t i) {
        const Candidate& c = found[i];
        return std::tuple(c.fan ? 1 : 0, emergency[i] ? 0 : 1, -c.value.value_or(-1e18));
    };
    std::stable_sort(order.begin(), order.end(),
                     [&](std::size_t a, std::size_t b) { return rank(a) < rank(b); });
    return order;
}

void addTemp(HwmonInventory& inventory, HwmonChip& chip, int n, SysfsFile input,
             const HwmonLimits& limits) {
    const std::string base = chip.dir + "/temp" + std::to_string(n);
    std::string label = textIn(base + "_label", "temp" + std::to_string(n));
    std::string name = chip.name + " " + label;
    std::string source = "hwmon " + name;
    inventory.temps.push_back({chip.name, std::move(label), classifyHwmonChip(chip.name), true,
                               std::move(input), limits, std::move(name), std::move(source)});
    ++chip.temps;
}

void addFan(HwmonInventory& inventory, HwmonChip& chip, int n, SysfsFile input) {
    const std::string base = chip.dir + "/fan" + std::to_string(n);
    inventory.fans.push_back(
        {chip.name, std::move(input), numberIn(base + "_min"), numberIn(base + "_max")});
    ++chip.fans;
}

// k10temp's offset Tctl beside Tdie never stands for the CPU.
void markTctl(std::span<HwmonTemp> temps) {
    const bool hasTdie = std::any_of(temps.begin(), temps.end(),
                                     [](const HwmonTemp& t) { return t.label == "Tdie"; });
    for (HwmonTemp& temp : temps) {
        if (hasTdie && temp.label == "Tctl") temp.representsClass = false;
    }
}

// Old drivers keep their attributes one level down, in the device directory.
std::string attributeDir(const std::string& dir) {
    if (readSmallFile(dir + "/name")) return dir;
    if (readSmallFile(dir + "/device/name")) return dir + "/device";
    return dir;
}

struct Found {
    std::vector<HwmonChip> chips;
    std::vector<Candidate> inputs;
    std::vector<HwmonLimits> limits;
    std::vector<bool> emergency;
};

// Every input that reads now, with its value and limits; one descriptor open at a time.
Found findInputs(const std::string& root, const FilePool& pool) {
    Found found;
    const std::string classDir = root + "/sys/class/hwmon";
    for (const std::string& entry : listEntries(classDir, "hwmon")) {
        const std::string dir = attributeDir(childPath(classDir, entry));
        found.chips.push_back({dir, textIn(dir + "/name", entry), 0, 0});
        addCandidates(found.inputs, found.chips.size() - 1, dir, "temp", false);
        addCandidates(found.inputs, found.chips.size() - 1, dir, "fan", true);
    }
    std::vector<Candidate> readable;
    for (Candidate& input : found.inputs) {
        input.value = probe(input.path, pool);
        if (!input.value) continue;
        const std::string base = input.path.substr(0, input.path.size() - 6);  // "_input"
        found.limits.push_back(input.fan ? HwmonLimits{} : limitsOf(base));
        found.emergency.push_back(found.limits.back().emergency.has_value());
        readable.push_back(std::move(input));
    }
    found.inputs = std::move(readable);
    return found;
}

}  // namespace

HwmonInventory discoverHwmon(const std::string& root, FilePool* pool, std::size_t descriptors) {
    FilePool local;
    FilePool* files = pool != nullptr ? pool : &local;
    Found found = findInputs(root, *files);
    std::vector<bool> keep(found.inputs.size(), false);
    const auto order = keepOrder(found.inputs, found.emergency);
    for (std::size_t k = 0; k < order.size() && k < descriptors; ++k)
        keep[order[k]] = true;
    HwmonInventory inventory;
    std::vector<std::size_t> firstTemp(found.chips.size(), SIZE_MAX);
    for (std::size_t i = 0; i < found.inputs.size(); ++i) {
        const Candidate& input = found.inputs[i];
        HwmonChip& chip = found.chips[input.chip];
        auto file = keep[i] ? openReadable(input.path, files) : std::nullopt;
        if (!file) {
            if (!keep[i]) inventory.leftOut.push_back(input.path);
            continue;
        }
        if (input.fan) {
            addFan(inventory, chip, input.number, std::move(*file));
        } else {
            if (firstTemp[input.chip] == SIZE_MAX) firstTemp[input.chip] = inventory.temps.size();
            addTemp(inventory, chip, input.number, std::move(*file), found.limits[i]);
        }
    }
    for (std::size_t c = 0; c < found.chips.size(); ++c) {
        if (firstTemp[c] != SIZE_MAX) {
            markTctl(std::span(inventory.temps)
                         .subspan(firstTemp[c], static_cast<std::size_t>(found.chips[c].temps)));
        }
        if (found.chips[c].temps > 0 || found.chips[c].fans > 0) {
            inventory.chips.push_back(std::move(found.chips[c]));
        }
    }
    return inventory;
}

}  // namespace velmora
