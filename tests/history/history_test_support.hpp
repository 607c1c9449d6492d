#pragma once

#include <gtest/gtest.h>

#include <filesystem>
#include <fstream>
#include <iterator>
#include <string>

#include "store/history_file.hpp"
#include "store/history_tiers.hpp"

// What the history tests share: a sample whose figures follow from its time, and whole files.
namespace velmora::testing {

/// A multiple of 900, so every interval of every tier starts with the first sample.
inline constexpr std::int64_t kHistoryStart = 1'789'999'200;
inline constexpr std::uint64_t kThisMachine = 0x5eed;

/// A sample whose every figure can be told from its time, so a point read back can be checked.
inline HistorySample patternSample(std::int64_t time) {
    HistorySample s;
    s.time = time;
    s.level = Level::ok;
    s.thermal = ThermalState::nominal;
    s.hottestC = 40.0 + static_cast<double>(time % 50);
    s.cpuTempC = s.hottestC;
    s.cpuPercent = static_cast<double>(time % 100);
    return s;
}

inline std::string fileText(const std::filesystem::path& file) {
    std::ifstream in(file, std::ios::binary);
    return {std::istreambuf_iterator<char>(in), std::istreambuf_iterator<char>()};
}

inline void putText(const std::filesystem::path& file, const std::string& text) {
    std::ofstream out(file, std::ios::binary | std::ios::trunc);
    out << text;
}

/// Opens the history in `dir`, adds `seconds` pattern samples from `from`, writes them all.
inline void writeHistory(const std::filesystem::path& dir, std::int64_t from, int seconds,
                         std::uint64_t machine = kThisMachine) {
    auto opened = HistoryFile::open(dir, machine);
    ASSERT_TRUE(opened.file) << (opened.notes.empty() ? "" : opened.notes.front());
    std::array<std::uint64_t, HistoryStore::tierCount> written{};
    for (std::size_t t = 0; t < HistoryStore::tierCount; ++t)
        written.at(t) = opened.store->tier(t).pushed();
    for (int i = 0; i < seconds; ++i)
        opened.store->add(patternSample(from + i), std::nullopt);
    ASSERT_FALSE(opened.file->write(history_file::changedRecords(*opened.store, written), true));
}

}  // namespace velmora::testing
