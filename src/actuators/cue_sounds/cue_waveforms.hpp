#pragma once

#include <cstdint>
#include <vector>

namespace velmora::cues {

/// Samples per second of the cue sounds.
inline constexpr int sampleRate = 44100;

/// The alarm: 0.6 s of two tones, 880 Hz and 660 Hz, alternating every 0.15 s.
std::vector<std::int16_t> alarmWaveform();

/// The tick: 0.1 s of a bright 2.4 kHz ping that dies away quickly.
std::vector<std::int16_t> tickWaveform();

}  // namespace velmora::cues
