#include "actuators/linux/canberra_sounder.hpp"

#include <gtest/gtest.h>

#include <filesystem>

namespace velmora {
namespace {

TEST(CanberraSounder, PlaysTheProjectsOwnCueFiles) {
    const CanberraSounder sounder(VELMORA_CUE_SOUNDS_DIR);
    EXPECT_EQ(sounder.soundFile("alarm"),
              std::filesystem::path(VELMORA_CUE_SOUNDS_DIR) / "alarm.wav");
    EXPECT_TRUE(std::filesystem::is_regular_file(sounder.soundFile("alarm")));
    EXPECT_TRUE(std::filesystem::is_regular_file(sounder.soundFile("tick")));
}

// This machine has no sound server and no sound card: every cue must still return quietly.
TEST(CanberraSounder, WithoutASoundServerEveryCueReturnsSilently) {
    CanberraSounder sounder(VELMORA_CUE_SOUNDS_DIR);
    sounder.urgent();
    sounder.tick();
    sounder.alarm();
    sounder.tick();
    SUCCEED();
}

TEST(CanberraSounder, MissingSoundFilesAreSkippedSilently) {
    CanberraSounder sounder("/nonexistent/velmora/sounds");
    sounder.alarm();
    sounder.tick();
    SUCCEED();
}

}  // namespace
}  // namespace velmora
