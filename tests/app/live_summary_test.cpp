#include "app/controller/live_summary.hpp"

#include <gtest/gtest.h>

#include <string>

#include "metrics/heat_cause.hpp"
#include "policy/forecast.hpp"

namespace velmora {
namespace {

TEST(LiveSummary, AbsentValuesReadNa) {
    LiveInputs inputs;
    EXPECT_EQ(liveSummaryLine(inputs),
              "live: thermal=Nominal label=NORMAL cpu=n/a load=n/a ram=n/a cpuTemp=n/a "
              "gpuTemp=n/a battery=n/a gpu=n/a cores=n/a mem=n/a fan=n/a power=n/a sensors=0 "
              "lowPower=false FORCED(false)");
}

TEST(LiveSummary, PresentValues) {
    LiveInputs inputs;
    inputs.thermal = ThermalState::fair;
    inputs.cpuBusy = 49.5;
    inputs.load = 1.26;
    inputs.ramUsed = 62.2;
    inputs.cpuTemp = TempReading{-3.7, "x"};
    inputs.gpuTemp = TempReading{61.9, "y"};
    inputs.batteryTemp = TempReading{30.2, "z"};
    inputs.gpuLoad = 7.0;
    inputs.coreLoads = std::vector<double>{10.4, 90.6};
    inputs.memory = MemoryInfo{62.2, 9.96, 16.0, std::string("Normal")};
    inputs.fans = {FanReading{0, 1200.4, {}, {}}, FanReading{1, 1300.6, {}, {}}};
    inputs.power = PowerReading{12.34, "Battery discharge", "power_supply BAT0"};
    inputs.sensors = {NamedTemp{"a", 50, "s"}, NamedTemp{"b", 40, "s"}};
    inputs.lowPower = true;
    EXPECT_EQ(liveSummaryLine(inputs),
              "live: thermal=Fair label=WARM cpu=50% load=1.3 ram=62% cpuTemp=-3 gpuTemp=61 "
              "battery=30 gpu=7% cores=10/91 mem=10.0/16.0GB(Normal) fan=1200/1301 "
              "power=12.3W(Battery discharge) sensors=2 lowPower=true FORCED(false)");
}

TEST(LiveSummary, HeatItemTitleAndColour) {
    LiveInputs inputs;
    inputs.thermal = ThermalState::critical;
    inputs.cpuTemp = TempReading{-0.5, "x"};
    EXPECT_EQ(heatItemTitle(inputs), "EMERGENCY · -1°");
    EXPECT_EQ(heatItemColor(inputs), HeatColor::red);
    inputs.thermal = ThermalState::nominal;
    EXPECT_EQ(heatItemColor(inputs), HeatColor::label);
}

TEST(LiveSummary, TheTooltipTellsTheForecastWhenThereIsOne) {
    LiveInputs in;
    in.thermal = ThermalState::serious;
    in.cpuTemp = TempReading{91.0, "hwmon coretemp Package id 0"};
    EXPECT_EQ(heatItemDetails(in).tooltipText.find("critical"), std::string::npos);
    Forecast forecast;
    forecast.kind = ForecastKind::critical;
    forecast.eta = Seconds{240};
    in.forecast = forecast;
    const auto tip = heatItemDetails(in).tooltipText;
    EXPECT_NE(tip.find("91 °C"), std::string::npos) << tip;
    EXPECT_NE(tip.find("critical in about 4 min"), std::string::npos) << tip;
}

TEST(LiveSummary, TheTooltipNamesTheBusiestProcessFromWarmUp) {
    LiveInputs in;
    in.thermal = ThermalState::serious;
    in.cpuTemp = TempReading{91.0, "hwmon coretemp Package id 0"};
    in.heatCause = HeatCause{{ProcessShare{"cc1plus", 977, 96.0}, ProcessShare{"yes", 4242, 35.0}},
                             {},
                             {},
                             std::nullopt};
    const auto tip = heatItemDetails(in).tooltipText;
    EXPECT_NE(tip.find("cc1plus 96 %"), std::string::npos) << tip;
    EXPECT_EQ(tip.find("yes"), std::string::npos) << tip;
}

}  // namespace
}  // namespace velmora
