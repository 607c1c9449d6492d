#include "actuators/linux/canberra_sounder.hpp"

#include <gtest/gtest.h>

#include <cstdlib>
#include <filesystem>
#include <optional>
#include <string>
#include <vector>

#include "actuators/log_recorder.hpp"

namespace velmora {
namespace {

using Lines = std::vector<std::string>;

// libcanberra picks its output from CANBERRA_DRIVER when the context is made; a driver that
// does not exist stands for a machine without any way to play a sound, wherever the test runs.
class NoSoundSystem {
  public:
    NoSoundSystem() {
        if (const char* value = std::getenv(variable)) saved_ = value;
        ::setenv(variable, "velmora-no-such-driver", 1);
    }
    ~NoSoundSystem() {
        if (saved_) {
            ::setenv(variable, saved_->c_str(), 1);
        } else {
            ::unsetenv(variable);
        }
    }
    NoSoundSystem(const NoSoundSystem&) = delete;
    NoSoundSystem& operator=(const NoSoundSystem&) = delete;
    NoSoundSystem(NoSoundSystem&&) = delete;
    NoSoundSystem& operator=(NoSoundSystem&&) = delete;

  private:
    static constexpr const char* variable = "CANBERRA_DRIVER";
    std::optional<std::string> saved_;
};

TEST(CanberraSounder, PlaysTheProjectsOwnCueFiles) {
    const CanberraSounder sounder(VELMORA_CUE_SOUNDS_DIR);
    EXPECT_EQ(sounder.soundFile("alarm"),
              std::filesystem::path(VELMORA_CUE_SOUNDS_DIR) / "alarm.wav");
    EXPECT_TRUE(std::filesystem::is_regular_file(sounder.soundFile("alarm")));
    EXPECT_TRUE(std::filesystem::is_regular_file(sounder.soundFile("tick")));
}

// Every cue still returns at once; the log says once per sound that it could not be played.
TEST(CanberraSounder, WithoutASoundSystemEachSoundIsLoggedOnceAsNotPlayed) {
    testing::LogRecorder log;
    std::optional<CanberraSounder> sounder;
    {
        const NoSoundSystem none;
        sounder.emplace(VELMORA_CUE_SOUNDS_DIR, log.sink());
    }
    sounder->urgent();
    sounder->tick();
    sounder->alarm();
    sounder->tick();
    EXPECT_EQ(log.lines(), (Lines{"sound: cannot play alarm.wav (No such driver)",
                                  "sound: cannot play tick.wav (No such driver)"}));
}

TEST(CanberraSounder, MissingSoundFilesAreSkippedAndLoggedOnce) {
    testing::LogRecorder log;
    CanberraSounder sounder("/nonexistent/velmora/sounds", log.sink());
    sounder.alarm();
    sounder.tick();
    sounder.alarm();
    EXPECT_EQ(log.lines(), (Lines{"sound: cannot play alarm.wav (the file is missing)",
                                  "sound: cannot play tick.wav (the file is missing)"}));
}

}  // namespace
}  // namespace velmora
