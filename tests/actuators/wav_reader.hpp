#pragma once

#include <cstdint>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <optional>
#include <string>
#include <vector>

namespace velmora::testing {

/// A RIFF WAVE file as read back, independent of the code that wrote it.
struct WavFile {
    std::uint32_t riffSize = 0;
    std::uint64_t fileSize = 0;
    std::uint16_t format = 0;
    std::uint16_t channels = 0;
    std::uint32_t sampleRate = 0;
    std::uint32_t byteRate = 0;
    std::uint16_t blockAlign = 0;
    std::uint16_t bitsPerSample = 0;
    std::vector<std::int16_t> samples;  // 16-bit mono only

    double seconds() const { return static_cast<double>(samples.size()) / sampleRate; }
};

inline std::uint32_t littleEndian(const std::string& bytes, std::size_t at, int count) {
    std::uint32_t value = 0;
    for (int i = count - 1; i >= 0; --i) {
        value = (value << 8) | static_cast<unsigned char>(bytes[at + static_cast<std::size_t>(i)]);
    }
    return value;
}

/// Walks the chunks after "RIFF....WAVE"; nothing when the file is not a 16-bit PCM WAVE.
inline std::optional<WavFile> readWav(const std::filesystem::path& path) {
    std::ifstream in(path, std::ios::binary);
    const std::string bytes((std::istreambuf_iterator<char>(in)), std::istreambuf_iterator<char>());
    if (bytes.size() < 12 || bytes.compare(0, 4, "RIFF") != 0 || bytes.compare(8, 4, "WAVE") != 0)
        return std::nullopt;
    WavFile wav;
    wav.riffSize = littleEndian(bytes, 4, 4);
    wav.fileSize = bytes.size();
    bool haveData = false;
    for (std::size_t at = 12; at + 8 <= bytes.size();) {
        const std::string id = bytes.substr(at, 4);
        const std::uint32_t size = littleEndian(bytes, at + 4, 4);
        const std::size_t body = at + 8;
        if (body + size > bytes.size()) return std::nullopt;
        if (id == "fmt " && size >= 16) {
            wav.format = static_cast<std::uint16_t>(littleEndian(bytes, body, 2));
            wav.channels = static_cast<std::uint16_t>(littleEndian(bytes, body + 2, 2));
            wav.sampleRate = littleEndian(bytes, body + 4, 4);
            wav.byteRate = littleEndian(bytes, body + 8, 4);
            wav.blockAlign = static_cast<std::uint16_t>(littleEndian(bytes, body + 12, 2));
            wav.bitsPerSample = static_cast<std::uint16_t>(littleEndian(bytes, body + 14, 2));
        } else if (id == "data") {
            for (std::size_t i = 0; i + 1 < size; i += 2) {
                wav.samples.push_back(static_cast<std::int16_t>(littleEndian(bytes, body + i, 2)));
            }
            haveData = true;
        }
        at = body + size + (size % 2);
    }
    if (!haveData || wav.format != 1 || wav.bitsPerSample != 16) return std::nullopt;
    return wav;
}

}  // namespace velmora::testing
