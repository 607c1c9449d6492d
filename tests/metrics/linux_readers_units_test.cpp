#include <gtest/gtest.h>

#include "metrics/fixture_tree.hpp"
#include "metrics/linux/batteries.hpp"
#include "metrics/linux/gpu_power.hpp"
#include "metrics/linux/hwmon.hpp"
#include "metrics/linux/thermal_zones.hpp"
#include "metrics/linux/zone_sensors.hpp"

namespace velmora {
namespace {

using testing::FixtureTree;

BatteryPack pack(const char* status, std::optional<int> percent = std::nullopt,
                 std::optional<double> nowWh = std::nullopt,
                 std::optional<double> fullWh = std::nullopt) {
    BatteryPack p;
    p.name = "BAT";
    if (status) p.status = status;
    p.info.percent = percent;
    p.energyNowWh = nowWh;
    p.energyFullWh = fullWh;
    return p;
}

TEST(BatteryStatus, EveryDocumentedWordIsKeptAndAnythingElseIsUnknown) {
    for (const char* word : {"Unknown", "Charging", "Discharging", "Not charging", "Full"}) {
        EXPECT_EQ(batteryStatusWord(word), word);
    }
    EXPECT_EQ(batteryStatusWord("Bogus"), "Unknown");
    EXPECT_EQ(batteryStatusWord(""), "Unknown");
}

TEST(BatteryStatus, StatusesLaptopsReportOnAcNeverMeanOnBattery) {
    for (const char* word : {"Unknown", "Not charging", "Full", "Charging"}) {
        EXPECT_EQ(runningOnBattery({pack(word)}, std::nullopt), false) << word;
        EXPECT_EQ(runningOnBattery({pack(word), pack("Full")}, true), false) << word;
    }
}

TEST(BatteryStatus, OneDischargingPackOrAcOfflineMeansOnBattery) {
    EXPECT_EQ(runningOnBattery({pack("Unknown"), pack("Discharging")}, std::nullopt), true);
    EXPECT_EQ(runningOnBattery({pack("Full"), pack("Discharging")}, true), true);
    EXPECT_EQ(runningOnBattery({pack("Unknown")}, false), true);
    EXPECT_EQ(runningOnBattery({pack(nullptr)}, std::nullopt), std::nullopt);
}

TEST(BatteryCombination, PercentIsWeightedByEnergy) {
    const auto info =
        combineBatteries({pack("Full", 100, 23.2, 23.2), pack("Unknown", 10, 7.2, 72.0)}, true);
    EXPECT_EQ(info.percent, 32);  // 30.4 of 95.2 Wh; the plain mean would be 55
    EXPECT_EQ(info.onAC, true);
    EXPECT_EQ(info.charging, false);
}

TEST(BatteryCombination, PercentFallsBackToTheMeanWithoutEnergies) {
    const auto info = combineBatteries({pack("Full", 100, 23.2, 23.2), pack("Unknown", 11)}, true);
    EXPECT_EQ(info.percent, 56);  // (100 + 11) / 2 rounded
}

TEST(BatteryCombination, ChargingOnlyCountsWhileNothingDischarges) {
    EXPECT_EQ(combineBatteries({pack("Charging", 50)}, true).charging, true);
    const auto mixed = combineBatteries({pack("Charging", 50), pack("Discharging", 40)}, true);
    EXPECT_EQ(mixed.charging, false);
    EXPECT_EQ(mixed.onAC, false);
}

TEST(BatteryCombination, CurrentsAddUpAndTheBusiestPackSetsTheVoltage) {
    BatteryPack a = pack("Unknown", 80);
    a.info.amperageMA = 0.0;
    a.info.voltageMV = 12300.0;
    BatteryPack b = pack("Discharging", 41);
    b.info.amperageMA = -850.0;
    b.info.voltageMV = 11500.0;
    const auto info = combineBatteries({a, b}, false);
    EXPECT_EQ(info.amperageMA, -850.0);
    EXPECT_EQ(info.voltageMV, 11500.0);
}

TEST(BatteryCombination, PackPowersAddUp) {
    EXPECT_FALSE(combinedBatteryPower({}));
    const auto total = combinedBatteryPower({{4.5, "Battery discharge", "power_supply BAT0"},
                                             {6.0, "Battery discharge", "power_supply BAT1"}});
    ASSERT_TRUE(total);
    EXPECT_EQ(*total, (PowerReading{10.5, "Battery discharge", "power_supply BAT0 + BAT1"}));
    const auto mixed = combinedBatteryPower({{4.5, "Battery discharge", "power_supply BAT0"},
                                             {6.0, "Battery charge", "power_supply BAT1"}});
    EXPECT_EQ(mixed->label, "Battery power");
}

TEST(BatteryPackFromRaw, ChargeBecomesEnergyAtTheDesignVoltage) {
    BatteryRaw raw;
    raw.status = "Discharging";
    raw.chargeNow = 2'000'000;   // µAh
    raw.chargeFull = 4'000'000;  // µAh
    raw.voltageMicrovolts = 12'000'000;
    const BatteryPack p = batteryPackFromRaw("BAT0", raw, 11'100'000);
    EXPECT_EQ(p.status, "Discharging");
    EXPECT_EQ(p.info.percent, 50);
    EXPECT_DOUBLE_EQ(*p.energyNowWh, 22.2);
    EXPECT_DOUBLE_EQ(*p.energyFullWh, 44.4);
    EXPECT_EQ(p.source, "power_supply BAT0");
}

TEST(BatteryPackFromRaw, AnUndocumentedStatusReadsAsUnknownAndCarriesNoSign) {
    BatteryRaw raw;
    raw.status = "Discharging slowly";
    raw.currentMicroamps = 500'000;
    const BatteryPack p = batteryPackFromRaw("BAT0", raw, std::nullopt);
    EXPECT_EQ(p.status, "Unknown");
    EXPECT_EQ(p.info.amperageMA, 500.0);
    EXPECT_FALSE(p.energyNowWh);
}

TEST(GpuPower, MicrowattsBecomeTheGpusWatts) {
    EXPECT_EQ(gpuPowerReading(32'114'000, "hwmon amdgpu PPT"),
              (PowerReading{32.114, "GPU power", "hwmon amdgpu PPT"}));
    EXPECT_FALSE(gpuPowerReading(0, "x"));
    EXPECT_FALSE(gpuPowerReading(-1, "x"));
    EXPECT_FALSE(gpuPowerReading(5'000'000'000, "x"));
}

TEST(GpuPower, AverageIsPreferredAndInputIsTheFallback) {
    FixtureTree tree("");
    tree.write("sys/class/hwmon/hwmon0/name", "nouveau\n");
    tree.write("sys/class/hwmon/hwmon0/power1_input", "18500000\n");
    tree.write("sys/class/hwmon/hwmon1/name", "amdgpu\n");
    tree.write("sys/class/hwmon/hwmon1/power1_input", "40000000\n");
    tree.write("sys/class/hwmon/hwmon1/power1_average", "32000000\n");
    tree.write("sys/class/hwmon/hwmon2/name", "nct6798\n");
    tree.write("sys/class/hwmon/hwmon2/power1_input", "9000000\n");
    const auto files = discoverGpuPower(tree.root());
    ASSERT_EQ(files.size(), 2U);
    EXPECT_EQ(files[0].source, "hwmon nouveau power1_input");
    EXPECT_EQ(files[1].source, "hwmon amdgpu power1_average");
    EXPECT_EQ(files[1].file.readInteger(), 32'000'000);
}

TEST(ZoneRoles, ZoneTypesSayWhatTheyMeasure) {
    for (const char* cpu : {"cpu-thermal", "cpu0_thermal", "soc_thermal", "SoC-thermal",
                            "x86_pkg_temp", "bigcore0-thermal"}) {
        EXPECT_EQ(zoneRole(cpu), ZoneRole::cpu) << cpu;
    }
    EXPECT_EQ(zoneRole("gpu-thermal"), ZoneRole::gpu);
    EXPECT_EQ(zoneRole("acpitz"), ZoneRole::acpi);
    for (const char* other : {"ddr-thermal", "iwlwifi_1", "pch_cannonlake", "INT3400 Thermal"}) {
        EXPECT_EQ(zoneRole(other), ZoneRole::other) << other;
    }
}

void writeZone(const FixtureTree& tree, int n, const std::string& type, const std::string& milli) {
    const std::string dir = "sys/class/thermal/thermal_zone" + std::to_string(n) + "/";
    tree.write(dir + "type", type + "\n");
    tree.write(dir + "temp", milli + "\n");
}

TEST(ZoneListing, AnOldKernelsMirrorWithoutADeviceCoversEveryZoneOfItsType) {
    FixtureTree tree("");
    writeZone(tree, 0, "acpitz", "50000");
    writeZone(tree, 1, "acpitz", "52000");
    writeZone(tree, 2, "cpu-thermal", "60000");
    tree.write("sys/class/hwmon/hwmon0/name", "acpitz\n");
    tree.write("sys/class/hwmon/hwmon0/temp1_input", "50000\n");
    tree.write("sys/class/hwmon/hwmon0/temp2_input", "52000\n");
    tree.write("sys/class/hwmon/hwmon1/name", "cpu_thermal\n");
    tree.write("sys/class/hwmon/hwmon1/temp1_input", "60000\n");
    const auto zones = discoverThermalZones(tree.root());
    const auto hwmon = discoverHwmon(tree.root());
    const ZoneListing listing = listZones(zones, hwmon);
    EXPECT_EQ(listing.listed, (std::vector<bool>{false, false, false}));
    EXPECT_EQ(listing.hwmonMirrors, (std::vector<std::optional<ZoneRole>>{
                                        ZoneRole::acpi, ZoneRole::acpi, ZoneRole::cpu}));
    EXPECT_EQ(listing.names[0], "acpitz (thermal_zone0)");
    EXPECT_EQ(listing.names[2], "cpu-thermal");
}

TEST(ZoneListing, AChipWithItsOwnDeviceIsNotAMirrorByNameAlone) {
    FixtureTree tree("");
    writeZone(tree, 0, "acpitz", "50000");
    tree.write("sys/devices/platform/acpitz/marker", "\n");
    tree.write("sys/class/hwmon/hwmon0/name", "acpitz\n");
    tree.write("sys/class/hwmon/hwmon0/temp1_input", "50000\n");
    std::filesystem::create_directory_symlink("../../../devices/platform/acpitz",
                                              tree.path("sys/class/hwmon/hwmon0/device"));
    const ZoneListing listing =
        listZones(discoverThermalZones(tree.root()), discoverHwmon(tree.root()));
    EXPECT_EQ(listing.listed, std::vector<bool>{true});
    EXPECT_EQ(listing.hwmonMirrors, std::vector<std::optional<ZoneRole>>{std::nullopt});
}

TEST(ZoneListing, AZoneRegisteredUnderItsHwmonChipIsListedOnce) {
    FixtureTree tree("");
    tree.write("sys/devices/platform/lm75/hwmon/hwmon0/name", "lm75\n");
    tree.write("sys/devices/platform/lm75/hwmon/hwmon0/temp1_input", "41000\n");
    tree.write("sys/devices/platform/lm75/hwmon/hwmon0/thermal_zone3/type", "board-thermal\n");
    tree.write("sys/devices/platform/lm75/hwmon/hwmon0/thermal_zone3/temp", "41000\n");
    std::filesystem::create_directories(tree.path("sys/class/hwmon"));
    std::filesystem::create_directories(tree.path("sys/class/thermal"));
    std::filesystem::create_directory_symlink("../../devices/platform/lm75/hwmon/hwmon0",
                                              tree.path("sys/class/hwmon/hwmon0"));
    std::filesystem::create_directory_symlink(
        "../../devices/platform/lm75/hwmon/hwmon0/thermal_zone3",
        tree.path("sys/class/thermal/thermal_zone3"));
    const ZoneListing listing =
        listZones(discoverThermalZones(tree.root()), discoverHwmon(tree.root()));
    EXPECT_EQ(listing.listed, std::vector<bool>{false});
    EXPECT_EQ(listing.hwmonMirrors, std::vector<std::optional<ZoneRole>>{ZoneRole::other});
}

}  // namespace
}  // namespace velmora
