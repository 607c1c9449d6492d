#include "wav_writer.hpp"

#include <fstream>
#include <string>
#include <string_view>

namespace velmora::cues {
namespace {

// RIFF fields are little-endian whatever the machine.
void putLittleEndian(std::string& out, std::uint32_t value, int bytes) {
    for (int i = 0; i < bytes; ++i) {
        out.push_back(static_cast<char>((value >> (8 * i)) & 0xFFu));
    }
}

std::string header(std::uint32_t dataBytes, std::uint32_t sampleRate) {
    constexpr std::uint32_t channels = 1;
    constexpr std::uint32_t bytesPerSample = 2;
    std::string out;
    out += "RIFF";
    putLittleEndian(out, 36 + dataBytes, 4);
    out += "WAVEfmt ";
    putLittleEndian(out, 16, 4);  // size of the format chunk
    putLittleEndian(out, 1, 2);   // PCM
    putLittleEndian(out, channels, 2);
    putLittleEndian(out, sampleRate, 4);
    putLittleEndian(out, sampleRate * channels * bytesPerSample, 4);
    putLittleEndian(out, channels * bytesPerSample, 2);
    putLittleEndian(out, 8 * bytesPerSample, 2);
    out += "data";
    putLittleEndian(out, dataBytes, 4);
    return out;
}

}  // namespace

bool writeWav(const std::filesystem::path& file, const std::vector<std::int16_t>& samples,
              int sampleRate) {
    std::string bytes = header(static_cast<std::uint32_t>(samples.size() * 2),
                               static_cast<std::uint32_t>(sampleRate));
    for (const std::int16_t sample : samples) {
        putLittleEndian(bytes, static_cast<std::uint16_t>(sample), 2);
    }
    std::ofstream out(file, std::ios::binary | std::ios::trunc);
    out.write(bytes.data(), static_cast<std::streamsize>(bytes.size()));
    out.close();
    return static_cast<bool>(out);
}

}  // namespace velmora::cues
