#pragma once

#include <cstdint>
#include <filesystem>
#include <vector>

namespace velmora::cues {

/// Writes mono 16-bit PCM samples as a RIFF WAVE file; false when the file cannot be written.
bool writeWav(const std::filesystem::path& file, const std::vector<std::int16_t>& samples,
              int sampleRate);

}  // namespace velmora::cues
