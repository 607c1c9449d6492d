// Writes the watchdog's two cue sounds, alarm.wav and tick.wav, into the folder given as the
// only argument. Run by the build, so the project ships sounds it made itself.
#include <cstdio>
#include <filesystem>
#include <system_error>

#include "cue_waveforms.hpp"
#include "wav_writer.hpp"

int main(int argc, char** argv) {
    using namespace velmora::cues;
    if (argc != 2) {
        std::fputs("usage: velmora-make-cue-sounds OUTPUT_DIRECTORY\n", stderr);
        return 2;
    }
    const std::filesystem::path directory = argv[1];  // NOLINT: argv is an array by contract
    std::error_code error;
    std::filesystem::create_directories(directory, error);
    const bool written = writeWav(directory / "alarm.wav", alarmWaveform(), sampleRate) &&
                         writeWav(directory / "tick.wav", tickWaveform(), sampleRate);
    if (!written) {
        std::fprintf(stderr, "velmora-make-cue-sounds: could not write into %s\n",
                     directory.c_str());
        return 1;
    }
    return 0;
}
