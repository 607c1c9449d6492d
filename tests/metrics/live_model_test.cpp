#include "metrics/live_model.hpp"

#include <gtest/gtest.h>

#include <cmath>

namespace velmora {
namespace {

namespace LM = LiveModel;
using nlohmann::json;

const json kAbsentGauge = {{"value", "n/a"}, {"fill", 0.0}, {"stage", "none"}, {"ok", false}};

json withEntries(json base, const json& extra) {
    base.update(extra);
    return base;
}

TEST(LiveModel, EveryOptionalAbsentGivesNaGauges) {
    const json d = LM::dictionary(LiveInputs{});
    for (const char* key : {"cpu", "ram", "load", "gpu", "memPressure", "fan"}) {
        EXPECT_EQ(d[key], kAbsentGauge) << key;
    }
    for (const char* key : {"cpuTemp", "gpuTemp", "batteryTemp"}) {
        EXPECT_EQ(d[key], withEntries(kAbsentGauge, {{"source", "none"}})) << key;
    }
    EXPECT_EQ(d["power"], withEntries(kAbsentGauge, {{"source", "none"}, {"label", "none"}}));
    EXPECT_EQ(d["battery"], withEntries(kAbsentGauge, {{"state", "n/a"}}));
    EXPECT_EQ(d["ramDetail"], "n/a");
    EXPECT_EQ(d["peakTemp"], "n/a");
    EXPECT_EQ(d["peakTag"], "Peak temp: n/a");
    EXPECT_EQ(d["coreLoads"], json::array());
    EXPECT_EQ(d["sensorList"], json::array());
    EXPECT_EQ(d["spark"], json::array());
}

TEST(LiveModel, DictionaryHasAll29Keys) {
    const json d = LM::dictionary(LiveInputs{});
    const std::vector<std::string> keys{
        "status",    "thermal",  "cpuTemp", "gpuTemp",   "batteryTemp", "cpu",
        "ram",       "load",     "cores",   "gpu",       "memPressure", "ramDetail",
        "fan",       "power",    "battery", "coreLoads", "sensorList",  "peakState",
        "peakLabel", "peakTemp", "spark",   "lowPower",  "live",        "foot",
        "peakTag",   "forced",   "sources", "powerList", "batteryList"};
    EXPECT_EQ(d.size(), 29U);
    for (const auto& key : keys)
        EXPECT_TRUE(d.contains(key)) << key;
}

TEST(LiveModel, StatusAndThermalFromTheState) {
    LiveInputs in;
    in.thermal = ThermalState::serious;
    const json d = LM::dictionary(in);
    EXPECT_EQ(d["status"], (json{{"label", "EXTREME HEAT"}, {"stage", "extreme"}, {"level", 3}}));
    EXPECT_EQ(d["thermal"], (json{{"value", "Serious"},
                                  {"fill", 0.75},
                                  {"stage", "extreme"},
                                  {"ok", true},
                                  {"label", "EXTREME HEAT"}}));
}

TEST(LiveModel, UsageStageThresholdsAreInclusiveUpward) {
    EXPECT_EQ(LM::usageStage(74.9), "normal");
    EXPECT_EQ(LM::usageStage(75), "warm");
    EXPECT_EQ(LM::usageStage(89.9), "warm");
    EXPECT_EQ(LM::usageStage(90), "hot");
    EXPECT_EQ(LM::tempStage(75), "warm");
    EXPECT_EQ(LM::tempStage(90), "hot");
}

TEST(LiveModel, LoadStagePerCore) {
    EXPECT_EQ(LM::loadStage(2.8, 4), "warm");
    EXPECT_EQ(LM::loadStage(2.7, 4), "normal");
    EXPECT_EQ(LM::loadStage(4.0, 4), "hot");
    EXPECT_EQ(LM::loadStage(0.9, 0), "warm");
    EXPECT_EQ(LM::loadStage(1.0, 0), "hot");
}

TEST(LiveModel, ThermalFillSharesThreeQuartersForHotAndExtreme) {
    EXPECT_EQ(LM::thermalFill(Level::ok), 0.25);
    EXPECT_EQ(LM::thermalFill(Level::warm), 0.5);
    EXPECT_EQ(LM::thermalFill(Level::hot), 0.75);
    EXPECT_EQ(LM::thermalFill(Level::extreme), 0.75);
    EXPECT_EQ(LM::thermalFill(Level::blowout), 1.0);
}

TEST(LiveModel, LoadGaugeFillIsCappedAtOne) {
    LiveInputs in;
    in.load = 12.345;
    in.cores = 8;
    EXPECT_EQ(LM::dictionary(in)["load"],
              (json{{"value", "12.3"}, {"fill", 1.0}, {"stage", "hot"}, {"ok", true}}));
    in.load = 2.0;
    EXPECT_EQ(LM::dictionary(in)["load"]["fill"], 0.25);
}

TEST(LiveModel, FanWithoutMaximumFillsOver6500) {
    LiveInputs in;
    in.fans = {{0, 3000.0, std::nullopt, std::nullopt}};
    EXPECT_EQ(
        LM::dictionary(in)["fan"],
        (json{{"value", "3000"}, {"fill", 3000.0 / 6500.0}, {"stage", "normal"}, {"ok", true}}));
}

TEST(LiveModel, TwoFansAreRoundedAndJoined) {
    LiveInputs in;
    in.fans = {{0, 1200.4, 1000.0, 6000.0}, {1, 1300.6, std::nullopt, std::nullopt}};
    const json fan = LM::dictionary(in)["fan"];
    EXPECT_EQ(fan["value"], "1200/1301");
    EXPECT_EQ(fan["fill"], 1200.4 / 6000.0);
}

TEST(LiveModel, FanWithAZeroMaximumStillGivesAFiniteFill) {
    LiveInputs in;
    in.fans = {{0, 0.0, std::nullopt, 0.0}};
    EXPECT_EQ(LM::dictionary(in)["fan"]["fill"], 0.0);
    EXPECT_NE(LM::json(in), "{}");
}

TEST(LiveModel, TemperatureGauge) {
    LiveInputs in;
    in.cpuTemp = TempReading{88.5, "SMC TC0P"};
    EXPECT_EQ(LM::dictionary(in)["cpuTemp"], (json{{"value", "89°C"},
                                                   {"fill", 88.5 / 110.0},
                                                   {"stage", "warm"},
                                                   {"ok", true},
                                                   {"source", "SMC TC0P"},
                                                   {"short", "89°"},
                                                   {"band", "Warm"}}));
    in.cpuTemp = TempReading{120, "x"};
    EXPECT_EQ(LM::dictionary(in)["cpuTemp"]["fill"], 1.0);
    EXPECT_EQ(LM::dictionary(in)["cpuTemp"]["band"], "Hot");
    in.cpuTemp = TempReading{40, "x"};
    EXPECT_EQ(LM::dictionary(in)["cpuTemp"]["band"], "Normal");
}

TEST(LiveModel, PercentGauges) {
    LiveInputs in;
    in.cpuBusy = 74.5;
    in.ramUsed = 91.0;
    in.gpuLoad = 0.0;
    const json d = LM::dictionary(in);
    EXPECT_EQ(d["cpu"],
              (json{{"value", "75%"}, {"fill", 0.745}, {"stage", "normal"}, {"ok", true}}));
    EXPECT_EQ(d["ram"]["stage"], "hot");
    EXPECT_EQ(d["gpu"], (json{{"value", "0%"}, {"fill", 0.0}, {"stage", "normal"}, {"ok", true}}));
}

TEST(LiveModel, MemoryPressureGauge) {
    LiveInputs in;
    for (const auto& [name, stage, fill] :
         {std::tuple{"Critical", "hot", 1.0}, std::tuple{"Warning", "warm", 0.6},
          std::tuple{"Normal", "normal", 0.25}, std::tuple{"Odd", "normal", 0.25}}) {
        in.memPressure = name;
        EXPECT_EQ(LM::dictionary(in)["memPressure"],
                  (json{{"value", name}, {"fill", fill}, {"stage", stage}, {"ok", true}}));
    }
}

TEST(LiveModel, RamDetail) {
    LiveInputs in;
    in.memory = MemoryInfo{40.0, 6.44, 16.0, std::nullopt};
    EXPECT_EQ(LM::dictionary(in)["ramDetail"], "6.4 of 16 GB");
}

TEST(LiveModel, PowerGauge) {
    LiveInputs in;
    in.power = PowerReading{18.0, "Battery discharge", "Battery (IORegistry)"};
    EXPECT_EQ(LM::dictionary(in)["power"], (json{{"value", "18.0 W"},
                                                 {"fill", 0.3},
                                                 {"stage", "normal"},
                                                 {"ok", true},
                                                 {"source", "Battery (IORegistry)"},
                                                 {"label", "Battery discharge"}}));
}

TEST(LiveModel, BatteryGaugeStates) {
    LiveInputs in;
    in.battery = BatteryInfo{.percent = 97, .charging = true, .onAC = true};
    EXPECT_EQ(LM::dictionary(in)["battery"], (json{{"value", "97%"},
                                                   {"fill", 0.97},
                                                   {"stage", "normal"},
                                                   {"ok", true},
                                                   {"state", "Charging"}}));
    in.battery = BatteryInfo{.percent = 12, .charging = false, .onAC = true};
    EXPECT_EQ(LM::dictionary(in)["battery"]["state"], "On AC");
    EXPECT_EQ(LM::dictionary(in)["battery"]["stage"], "normal");
    in.battery = BatteryInfo{.percent = 12};
    EXPECT_EQ(LM::dictionary(in)["battery"]["state"], "On battery");
}

TEST(LiveModel, BatteryWithoutPercentHasNoValueButAState) {
    LiveInputs in;
    in.battery = BatteryInfo{.onAC = true};
    EXPECT_EQ(LM::dictionary(in)["battery"], withEntries(kAbsentGauge, {{"state", "On AC"}}));
}

TEST(LiveModel, ListsPeaksAndFlags) {
    LiveInputs in;
    in.coreLoads = std::vector<double>{10.4, 55.5, 100.0};
    in.sensors = {{"TC0P", 61.6, "SMC TC0P"}};
    in.peakLevel = Level::hot;
    in.peakCpuTemp = 87.5;
    in.cpuHistory = {1.5, 2.5};
    in.lowPower = true;
    in.cores = 6;
    const json d = LM::dictionary(in);
    EXPECT_EQ(d["coreLoads"], (json{10, 56, 100}));
    EXPECT_EQ(d["sensorList"],
              (json{{{"name", "TC0P"}, {"value", "62°C"}, {"source", "SMC TC0P"}}}));
    EXPECT_EQ(d["peakState"], "Serious");
    EXPECT_EQ(d["peakLabel"], "HOT");
    EXPECT_EQ(d["peakTemp"], "88°C");
    EXPECT_EQ(d["peakTag"], "Peak 88°C");
    EXPECT_EQ(d["spark"], (json{1.5, 2.5}));
    EXPECT_EQ(d["lowPower"], true);
    EXPECT_EQ(d["cores"], 6);
    EXPECT_EQ(d["forced"], false);
    EXPECT_EQ(d["live"], "Live · updates every second");
}

TEST(LiveModel, ForcedStateChangesLiveAndTheFootLine) {
    LiveInputs in;
    in.forced = true;
    const json d = LM::dictionary(in);
    EXPECT_EQ(d["live"], "TEST · thermal state forced (debug build)");
    EXPECT_EQ(d["foot"], "TEST · thermal state forced · Temps: n/a");
    EXPECT_EQ(d["forced"], true);
}

TEST(LiveModel, FootLineNamesTheSensorWord) {
    LiveInputs in;
    in.cpuTemp = TempReading{50, "SMC TC0P"};
    in.lowPower = true;
    EXPECT_EQ(LM::footLine(in), "Live · 1 s · Temps: SMC · Low Power Mode on");
    in.cpuTemp.reset();
    in.lowPower = false;
    in.gpuTemp = TempReading{50, "IOHID GPU MTR"};
    EXPECT_EQ(LM::footLine(in), "Live · 1 s · Temps: IOHID");
    in.gpuTemp.reset();
    EXPECT_EQ(LM::footLine(in), "Live · 1 s · Temps: n/a");
}

TEST(LiveModel, SourcesNameThePlatformsThermalState) {
    LiveInputs in;
    in.batteryTemp = TempReading{30, "Battery (IORegistry)"};
    EXPECT_EQ(LM::dictionary(in, Platform::macos)["sources"],
              (json{{"thermal", "ProcessInfo.thermalState"},
                    {"cpuTemp", "n/a"},
                    {"gpuTemp", "n/a"},
                    {"batteryTemp", "Battery (IORegistry)"}}));
    EXPECT_EQ(LM::dictionary(in, Platform::gnuLinux)["sources"]["thermal"],
              "derived thermal state");
}

TEST(LiveModelJson, KeysAreSortedAndSlashesUnescaped) {
    LiveInputs in;
    in.cpuTemp = TempReading{50, "hwmon /sys/x"};
    const std::string text = LM::json(in);
    EXPECT_EQ(text.find("\\/"), std::string::npos);
    EXPECT_NE(text.find("hwmon /sys/x"), std::string::npos);
    EXPECT_EQ(text.rfind("{\"battery\":", 0), 0U);
    EXPECT_LT(text.find("\"battery\""), text.find("\"cores\""));
    EXPECT_LT(text.find("\"cores\""), text.find("\"thermal\""));
    EXPECT_EQ(json::parse(text), LM::dictionary(in));
}

TEST(LiveModelJson, WritesDegreeSignsAsUtf8) {
    LiveInputs in;
    in.cpuTemp = TempReading{50, "x"};
    EXPECT_NE(LM::json(in).find("50°C"), std::string::npos);
}

TEST(LiveModelJson, UnwritableDocumentBecomesEmptyObject) {
    LiveInputs nan;
    nan.cpuHistory = {std::nan("")};
    EXPECT_EQ(LM::json(nan), "{}");
    LiveInputs badText;
    badText.sensors = {{"bad\xFF", 40.0, "x"}};
    EXPECT_EQ(LM::json(badText), "{}");
}

TEST(LiveModel, NaIsTheMissingText) {
    EXPECT_EQ(LM::na, "n/a");
}

}  // namespace
}  // namespace velmora
