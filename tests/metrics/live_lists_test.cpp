#include <gtest/gtest.h>

#include "metrics/live_model.hpp"

namespace velmora {
namespace {

using nlohmann::json;

TEST(LiveLists, EveryPowerFigureIsListedWithItsLabelAndSource) {
    LiveInputs in;
    in.powerSources = {{14.04, "Package power", "RAPL package-0"},
                       {32.114, "GPU power", "hwmon amdgpu PPT"}};
    const json d = LiveModel::dictionary(in);
    EXPECT_EQ(
        d["powerList"],
        (json::array(
            {{{"label", "Package power"}, {"value", "14.0 W"}, {"source", "RAPL package-0"}},
             {{"label", "GPU power"}, {"value", "32.1 W"}, {"source", "hwmon amdgpu PPT"}}})));
}

TEST(LiveLists, EveryBatteryIsListedWithItsOwnStatus) {
    LiveInputs in;
    in.batteries = {BatteryPack{.name = "BAT0",
                                .status = "Not charging",
                                .info = {.percent = 80},
                                .source = "power_supply BAT0"},
                    BatteryPack{.name = "BAT1", .source = "power_supply BAT1"}};
    const json d = LiveModel::dictionary(in);
    EXPECT_EQ(d["batteryList"], (json::array({{{"name", "BAT0"},
                                               {"value", "80%"},
                                               {"fill", 0.8},
                                               {"state", "Not charging"},
                                               {"source", "power_supply BAT0"}},
                                              {{"name", "BAT1"},
                                               {"value", "n/a"},
                                               {"fill", 0.0},
                                               {"state", "n/a"},
                                               {"source", "power_supply BAT1"}}})));
}

TEST(LiveLists, NoFiguresGiveEmptyLists) {
    const json d = LiveModel::dictionary(LiveInputs{});
    EXPECT_EQ(d["powerList"], json::array());
    EXPECT_EQ(d["batteryList"], json::array());
}

}  // namespace
}  // namespace velmora
