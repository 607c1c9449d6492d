#pragma once

#include <chrono>
#include <memory>
#include <optional>
#include <set>
#include <string>
#include <vector>

#include "metrics/linux/gpu_power.hpp"
#include "metrics/linux/gpu_vendor.hpp"
#include "metrics/linux/hwmon.hpp"
#include "metrics/linux/power_profiles.hpp"
#include "metrics/linux/power_supply.hpp"
#include "metrics/linux/proc_stat.hpp"
#include "metrics/linux/rapl.hpp"
#include "metrics/linux/sysfs_file.hpp"
#include "metrics/linux/sysfs_fingerprint.hpp"
#include "metrics/linux/thermal_deriver.hpp"
#include "metrics/linux/thermal_zones.hpp"
#include "metrics/linux/zone_sensors.hpp"
#include "metrics/metrics_backend.hpp"

namespace velmora {

/// Everything found under the root at discovery, with its files kept open.
struct LinuxInventory {
    std::optional<SysfsFile> procStat;
    std::optional<SysfsFile> meminfo;
    std::optional<SysfsFile> pressure;
    std::optional<SysfsFile> loadavg;
    std::optional<SysfsFile> cpuOnline;
    HwmonInventory hwmon;
    std::vector<ThermalZone> zones;
    ZoneListing zoneListing;
    std::vector<SysfsFile> throttleCounters;
    PowerSupplies supplies;
    RaplMeter rapl;
    std::vector<SysfsFile> gpuBusy;
    std::vector<GpuPowerFile> gpuPower;
    std::optional<SysfsFile> platformProfile;
};

/// Reads /proc and /sys below a root prefix: discovery once, one `pread` per attribute per
/// sample. After a failed read, and once a minute, it compares the sensor directories with what
/// it found before and rediscovers only when a device came, went or was replaced; a rediscovery
/// keeps the descriptors of unchanged files and closes the others before it opens anything. With
/// more inputs than descriptors it keeps the emergency-limited and hottest temperatures and says
/// what it left out. Derives the thermal state from the kernel's trip points and hwmon limits.
class LinuxBackend final : public MetricsBackend {
  public:
    static constexpr std::chrono::seconds rediscoverEvery{60};
    /// CPU loads over a shorter span are a handful of clock ticks: noise, so they are absent.
    static constexpr std::chrono::milliseconds minimumCpuSpan{200};
    /// Descriptors left for everything else the process opens (log, bus, sounds, settings).
    static constexpr std::size_t reservedDescriptors = 64;

    /// `root` is "/" or a directory holding proc/ and sys/ trees; `vendorGpu` may be null.
    explicit LinuxBackend(std::string root, std::unique_ptr<GpuVendorLibrary> vendorGpu = nullptr);

    void prime(Timestamp now) override;
    LiveInputs sample(Timestamp now) override;
    std::string sensorSummary() override;
    MetricSources sources() const override;
    std::vector<ThermalLimit> thermalLimits() const override;
    std::vector<LimitReading> limitReadings() const override;

    /// Where the power-saver state comes from (power-profiles-daemon on a live system).
    void setPowerProfiles(std::unique_ptr<PowerProfileSource> profiles) {
        profiles_ = std::move(profiles);
    }
    void assumeThermal(ThermalState previous) override { deriver_.assumePrevious(previous); }
    std::vector<std::string> takeNotices() override;

    /// How many times the files were discovered, the first time included.
    int discoveries() const { return discoveries_; }
    /// Compares the sensor directories with the last discovery's and rediscovers only when they
    /// differ; true when it rediscovered.
    bool rediscoverIfChanged(Timestamp now);
    const ThermalDeriver& thermal() const { return deriver_; }

  private:
    enum class SlotKind { hwmon, zone, gpu };
    struct ThermalSlot {
        SlotKind kind = SlotKind::hwmon;
        std::size_t index = 0;
    };
    struct Chosen {
        std::string cpuTemp;
        /// Says which kind of source stands in for a CPU sensor, when one does.
        std::string cpuTempNote;
        std::string gpuTemp;
        std::string batteryTemp;
        std::string power;
        std::vector<std::string> powerFiles;
    };

    void discover(Timestamp now, SysfsFingerprint fingerprint);
    void noteDiscovery(std::size_t reused);
    void setThermalSources();
    void maybeRediscover(Timestamp now);

    std::optional<long long> readInteger(const SysfsFile& file);
    std::optional<std::string_view> readText(const SysfsFile& file, std::vector<char>& buffer);

    void sampleCpu(LiveInputs& in, Timestamp now);
    void sampleMemory(LiveInputs& in);
    void sampleLoad(LiveInputs& in);
    void sampleTemperatures(LiveInputs& in);
    void sampleHwmonTemps(LiveInputs& in);
    void sampleVendorGpus(LiveInputs& in);
    void refreshGpuThermalSources();
    void addGpuThermalSources(std::vector<ThermalSourceDef>& sourceDefs);
    std::string gpuSourceId(std::size_t index) const;
    std::string gpuSensorSource(std::size_t index) const;
    std::optional<std::string> throttledGpu() const;
    std::optional<double> gpuCelsius(std::size_t index) const;
    std::optional<PowerReading> gpuPower();
    std::string limitLabel(const ThermalSlot& slot) const;
    std::vector<DeviceSource> gpuSourceRows() const;
    void addZoneSensors(LiveInputs& in);
    void chooseHeadlineTemps(LiveInputs& in);
    BatteryRaw readBattery(const BatteryFiles& files);
    void sampleBattery(LiveInputs& in);
    void addPowerSource(LiveInputs& in, const PowerReading& reading, const std::string& file);
    ThermalState deriveThermal();
    void noteStale();
    bool throttleRose();
    void sampleFans(LiveInputs& in);
    void samplePower(LiveInputs& in, Timestamp now);
    void sampleGpuLoad(LiveInputs& in);
    bool lowPowerMode();

    std::string root_;
    std::unique_ptr<GpuVendorLibrary> vendorGpu_;
    std::unique_ptr<PowerProfileSource> profiles_;
    LinuxInventory inv_;
    ThermalDeriver deriver_;
    std::vector<ThermalSlot> thermalSlots_;
    /// Per thermal source: the name its temperature is listed under ("hwmon coretemp Package
    /// id 0", "thermal acpitz"), which, unlike its sysfs path, stays the same between boots.
    std::vector<std::string> thermalNames_;
    int discoveries_ = 0;
    SysfsFingerprint fingerprint_;
    std::vector<std::string> notices_;
    std::set<std::string> notedStale_;
    std::optional<Timestamp> discoveredAt_;
    bool readFailed_ = false;

    // Reused from sample to sample so that a sample allocates little.
    std::vector<char> procBuffer_;
    std::vector<char> smallBuffer_;
    ProcStat stat_;
    std::optional<ProcStat> lastStat_;
    std::optional<Timestamp> lastStatAt_;
    std::vector<std::optional<double>> hwmonValues_;
    std::vector<std::optional<double>> zoneValues_;
    std::vector<std::optional<double>> thermalReadings_;
    std::vector<long long> throttleCounts_;
    std::vector<VendorGpu> vendorGpus_;
    std::vector<GpuThresholds> gpuThresholds_;
    Chosen chosen_;
};

}  // namespace velmora
