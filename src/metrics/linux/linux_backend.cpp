#include "metrics/linux/linux_backend.hpp"

#include <algorithm>
#include <utility>

#include "metrics/linux/file_pool.hpp"
#include "metrics/linux/sysfs_dir.hpp"

namespace velmora {

namespace {

// "/" reads the live system; any other root is a prefix such as a fixture tree.
std::string normalisedRoot(std::string root) {
    while (!root.empty() && root.back() == '/')
        root.pop_back();
    return root;
}

constexpr std::size_t kMaxTextFile = std::size_t{1} << 20U;

std::vector<SysfsFile> discoverGpuBusy(const std::string& root) {
    std::vector<SysfsFile> files;
    const std::string drm = root + "/sys/class/drm";
    for (const std::string& card : listEntries(drm, "card")) {
        // Connectors ("card0-DP-1") are not devices.
        if (card.find('-') != std::string::npos) continue;
        if (auto file = SysfsFile::openReadable(
                childPath(childPath(drm, card), "device/gpu_busy_percent"))) {
            files.push_back(std::move(*file));
        }
    }
    return files;
}

}  // namespace

LinuxBackend::LinuxBackend(std::string root, std::unique_ptr<GpuVendorLibrary> vendorGpu)
    : root_(normalisedRoot(std::move(root))),
      vendorGpu_(std::move(vendorGpu)),
      procBuffer_(16384),
      smallBuffer_(4096) {}

void LinuxBackend::discover(Timestamp now, SysfsFingerprint fingerprint) {
    // The many sensor inputs keep their descriptors; everything else is closed before anything
    // is opened, so a rediscovery never holds two inventories.
    FilePool pool;
    for (HwmonTemp& temp : inv_.hwmon.temps)
        pool.add(std::move(temp.input));
    for (HwmonFan& fan : inv_.hwmon.fans)
        pool.add(std::move(fan.input));
    inv_ = LinuxInventory{};
    pool.closeChanged();
    LinuxInventory inv;
    inv.procStat = SysfsFile::openReadable(root_ + "/proc/stat");
    inv.meminfo = SysfsFile::openReadable(root_ + "/proc/meminfo");
    inv.pressure = SysfsFile::openReadable(root_ + "/proc/pressure/memory");
    inv.loadavg = SysfsFile::openReadable(root_ + "/proc/loadavg");
    inv.cpuOnline = SysfsFile::openReadable(root_ + "/sys/devices/system/cpu/online");
    inv.zones = discoverThermalZones(root_);
    inv.throttleCounters = discoverThrottleCounters(root_);
    inv.supplies = discoverPowerSupplies(root_);
    inv.rapl = RaplMeter::discover(root_);
    inv.gpuBusy = discoverGpuBusy(root_);
    inv.gpuPower = discoverGpuPower(root_);
    inv.platformProfile = SysfsFile::openReadable(root_ + "/sys/firmware/acpi/platform_profile");
    // Last, so that the sensor inputs get what the descriptor limit leaves; pooled ones are
    // open already and count as available.
    inv.hwmon = discoverHwmon(root_, &pool, spareDescriptors(reservedDescriptors) + pool.size());
    // Zones that a hwmon chip already reports are listed once, so this needs the chips.
    inv.zoneListing = listZones(inv.zones, inv.hwmon);
    inv_ = std::move(inv);
    fingerprint_ = std::move(fingerprint);
    setThermalSources();
    throttleCounts_.clear();
    ++discoveries_;
    discoveredAt_ = now;
    readFailed_ = false;
    noteDiscovery(pool.reused());
}

void LinuxBackend::noteDiscovery(std::size_t reused) {
    const auto& hwmon = inv_.hwmon;
    if (discoveries_ > 1) {
        notices_.push_back("live: sensors rediscovered: " + std::to_string(hwmon.temps.size()) +
                           " temperature inputs and " + std::to_string(hwmon.fans.size()) +
                           " fans open, " + std::to_string(reused) + " of them kept from before");
    }
    if (hwmon.leftOut.empty()) return;
    constexpr std::size_t named = 10;
    std::string line = "live: descriptor limit: " + std::to_string(hwmon.leftOut.size()) +
                       " sensor inputs left out (kept " + std::to_string(hwmon.temps.size()) +
                       " temperatures, emergency limits and the hottest first): ";
    for (std::size_t i = 0; i < hwmon.leftOut.size() && i < named; ++i)
        line += (i > 0 ? ", " : "") + hwmon.leftOut[i];
    if (hwmon.leftOut.size() > named) {
        line += " and " + std::to_string(hwmon.leftOut.size() - named) + " more";
    }
    notices_.push_back(line);
}

std::vector<std::string> LinuxBackend::takeNotices() {
    return std::exchange(notices_, {});
}

bool LinuxBackend::rediscoverIfChanged(Timestamp now) {
    readFailed_ = false;
    discoveredAt_ = now;
    auto fingerprint = sysfsFingerprint(root_);
    if (fingerprint == fingerprint_) return false;
    discover(now, std::move(fingerprint));
    return true;
}

void LinuxBackend::setThermalSources() {
    std::vector<ThermalSourceDef> sourceDefs;
    thermalSlots_.clear();
    thermalNames_.clear();
    const auto& zoneSources = inv_.zoneListing.sources;
    for (std::size_t i = 0; i < inv_.zones.size(); ++i) {
        auto conditions = zoneConditions(inv_.zones[i].trips);
        if (conditions.empty()) continue;
        sourceDefs.push_back({inv_.zones[i].temp.path(), std::move(conditions)});
        thermalSlots_.push_back({SlotKind::zone, i});
        thermalNames_.push_back(i < zoneSources.size() ? zoneSources[i]
                                                       : "thermal " + inv_.zones[i].type);
    }
    for (std::size_t i = 0; i < inv_.hwmon.temps.size(); ++i) {
        auto conditions = hwmonConditions(inv_.hwmon.temps[i].limits);
        if (conditions.empty()) continue;
        sourceDefs.push_back({inv_.hwmon.temps[i].input.path(), std::move(conditions)});
        thermalSlots_.push_back({SlotKind::hwmon, i});
        thermalNames_.push_back(inv_.hwmon.temps[i].source);
    }
    addGpuThermalSources(sourceDefs);
    deriver_.setSources(std::move(sourceDefs));
}

void LinuxBackend::maybeRediscover(Timestamp now) {
    if (!discoveredAt_) {
        discover(now, sysfsFingerprint(root_));
        return;
    }
    const bool due = readFailed_ || now - *discoveredAt_ >= rediscoverEvery ||
                     now < *discoveredAt_;  // the clock was set back
    if (due) rediscoverIfChanged(now);
}

void LinuxBackend::prime(Timestamp now) {
    maybeRediscover(now);
    LiveInputs discarded;
    sampleCpu(discarded, now);
    bool ignored = false;
    (void)inv_.rapl.sample(now, ignored);
}

LiveInputs LinuxBackend::sample(Timestamp now) {
    maybeRediscover(now);
    LiveInputs in;
    sampleCpu(in, now);
    sampleTemperatures(in);
    in.thermal = deriveThermal();
    sampleMemory(in);
    sampleLoad(in);
    sampleBattery(in);
    // Hottest first; equal temperatures keep the order they were read in.
    std::stable_sort(in.sensors.begin(), in.sensors.end(),
                     [](const NamedTemp& a, const NamedTemp& b) { return a.celsius > b.celsius; });
    sampleFans(in);
    samplePower(in, now);
    sampleGpuLoad(in);
    in.lowPower = lowPowerMode();
    return in;
}

std::optional<long long> LinuxBackend::readInteger(const SysfsFile& file) {
    const auto value = file.readInteger();
    if (!value) readFailed_ = true;
    return value;
}

std::optional<std::string_view> LinuxBackend::readText(const SysfsFile& file,
                                                       std::vector<char>& buffer) {
    for (;;) {
        const auto text = file.read(buffer);
        if (!text) {
            readFailed_ = true;
            return std::nullopt;
        }
        // A full buffer may have cut the file short: grow and read again from the start.
        if (text->size() < buffer.size() || buffer.size() >= kMaxTextFile) return text;
        buffer.resize(buffer.size() * 2);
    }
}

}  // namespace velmora
