#include "app/core/presentation_rules.hpp"

#include <gtest/gtest.h>

#include <nlohmann/json.hpp>

namespace velmora {
namespace {

using nlohmann::json;

TEST(PickMode, SimulationCountdownIsCount) {
    EXPECT_EQ(pickMode(json{{"sim", true}, {"state", "countdown"}, {"level", 4}}, false),
              UIMode::count);
}

TEST(PickMode, SimulationCountdownLeavesTheLiveStageAtNone) {
    EXPECT_EQ(liveStageOf(json{{"sim", true}, {"state", "countdown"}, {"level", 4}}),
              AlertStage::none);
}

TEST(PickMode, SimulationScreensInOrder) {
    EXPECT_EQ(pickMode(json{{"sim", true}, {"simDone", true}, {"state", "countdown"}}, false),
              UIMode::simdone);
    EXPECT_EQ(pickMode(json{{"sim", true}, {"lead", true}}, false), UIMode::lead);
    EXPECT_EQ(pickMode(json{{"sim", true}, {"state", "fired"}}, true), UIMode::home);
}

TEST(PickMode, SimulationIgnoresTheSettingsRequest) {
    EXPECT_EQ(pickMode(json{{"sim", true}, {"consentNeeded", true}}, true), UIMode::home);
}

TEST(PickMode, FiredIsCount) {
    EXPECT_EQ(pickMode(json{{"state", "fired"}}, false), UIMode::count);
}

TEST(PickMode, ManualWinsOverRelief) {
    EXPECT_EQ(pickMode(json{{"manual", json::object()}, {"relief", json::object()}}, false),
              UIMode::manual);
}

TEST(PickMode, ManualOfAnyValueCounts) {
    EXPECT_EQ(pickMode(json{{"manual", nullptr}}, false), UIMode::manual);
}

TEST(PickMode, ConsentWinsOverSettings) {
    EXPECT_EQ(pickMode(json{{"consentNeeded", true}}, true), UIMode::consent);
}

TEST(PickMode, DeniedPermissionWithoutAutoShutdownIsNotPerm) {
    const json view{{"permState", "denied"}, {"autoEnabled", false}};
    EXPECT_EQ(pickMode(view, false), UIMode::home);
    EXPECT_EQ(pickMode(view, true), UIMode::settings);
}

TEST(PickMode, DeniedPermissionWithAutoShutdownIsPermUntilDismissed) {
    json view{{"permState", "denied"}, {"autoEnabled", true}};
    EXPECT_EQ(pickMode(view, false), UIMode::perm);
    view["permDismissed"] = true;
    EXPECT_EQ(pickMode(view, false), UIMode::home);
}

TEST(PickMode, KeysOfAnotherTypeCountAsFalse) {
    EXPECT_EQ(pickMode(json{{"consentNeeded", "true"}, {"sim", 1}}, false), UIMode::home);
    EXPECT_EQ(pickMode(json::array(), false), UIMode::home);
}

TEST(LiveStage, FromTheLevel) {
    EXPECT_EQ(liveStageOf(json{{"level", 4}}), AlertStage::emergency);
    EXPECT_EQ(liveStageOf(json{{"level", 3}}), AlertStage::extreme);
    EXPECT_EQ(liveStageOf(json{{"level", 2}}), AlertStage::none);
    EXPECT_EQ(liveStageOf(json{{"level", -1}}), AlertStage::none);
    EXPECT_EQ(liveStageOf(json{{"level", "4"}}), AlertStage::none);
    EXPECT_EQ(liveStageOf(json::object()), AlertStage::none);
}

TEST(ViewReads, Defaults) {
    EXPECT_EQ(viewText(json::object(), "state", "idle"), "idle");
    EXPECT_EQ(viewInteger(json::object(), "level", -1), -1);
    EXPECT_EQ(viewInteger(json{{"remaining", 7.5}}, "remaining", 0), 0);
    EXPECT_FALSE(viewFlag(json::object(), "sim"));
}

TEST(Names, ModesAndStages) {
    EXPECT_EQ(modeName(UIMode::home), "home");
    EXPECT_EQ(modeName(UIMode::simdone), "simdone");
    EXPECT_EQ(modeName(UIMode::manual), "manual");
    EXPECT_EQ(rawValue(AlertStage::none), "none");
    EXPECT_EQ(rawValue(AlertStage::emergency), "emergency");
}

}  // namespace
}  // namespace velmora
