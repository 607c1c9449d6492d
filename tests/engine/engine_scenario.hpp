#pragma once

#include <gtest/gtest.h>

#include <filesystem>
#include <memory>
#include <nlohmann/json.hpp>
#include <string>
#include <vector>

#include "engine/engine.hpp"
#include "engine/engine_fakes.hpp"
#include "policy/platform_texts.hpp"
#include "store/settings_cache.hpp"
#include "support/temp_dir.hpp"

namespace velmora::testing {

/// Drives one engine tick by tick in virtual time over real stores in a temporary directory,
/// with a scripted sensor and shutdowner, a recording sounder and the log kept as lines.
/// Times are seconds after a fixed instant; the emergency's texts are the macOS wording unless
/// a test chooses another column.
class EngineScenario : public ::testing::Test {
  protected:
    static constexpr double kStart = 1'800'000'000;  // 2027-01-15T08:00:00Z
    static constexpr double kCritical = 108;         // the OS critical state
    static constexpr double kSerious = 96;
    static constexpr double kNominal = 55;

    static MonoTime at(double seconds) { return MonoTime::fromSeconds(kStart + seconds); }
    /// The wall clock at `seconds`: it runs in step with the monotonic one unless a test moves it.
    static Timestamp wallAt(double seconds) { return Timestamp::fromSeconds(kStart + seconds); }

    /// Builds the engine at `seconds` over `dataDir` (the temporary directory by default).
    void start(double seconds = 0);
    /// Records consent in the settings file, as the consent page of an earlier run did.
    void writeConsent(bool autoShutdown = true) const;
    nlohmann::json tickAt(double seconds);
    /// Ticks every `step` seconds from `from` to `to`, both included; returns the last view.
    nlohmann::json tickThrough(double from, double to, double step = 0.25);
    /// The log lines written since the last call.
    std::vector<std::string> takeLines();

    [[nodiscard]] std::filesystem::path markerPath() const;
    [[nodiscard]] std::filesystem::path settingsPath() const;
    [[nodiscard]] bool markerExists() const;
    [[nodiscard]] std::string markerText() const;
    [[nodiscard]] nlohmann::json markerJson() const;
    [[nodiscard]] nlohmann::json settingsJson() const;
    void writeMarkerText(const std::string& text) const;
    void writeSettingsText(const std::string& text) const;
    /// What a change notification does: the engine's settings cache reads the file again.
    void settingsFileChanged() const;
    /// Another process records "no consent yet" in the settings file, and it is read.
    void withdrawConsent() const;
    /// Waits for the marker and settings work that runs beside the engine.
    void settleFiles() const;

    /// "stage-c: state A -> B (thermal=… ladder=… level=… critical=… enabled=…)".
    static std::string stateLine(const std::string& from, const std::string& to,
                                 const std::string& details);

    /// The marker is flushed to the device on every shutdown call: on a memory file system
    /// that costs nothing, on a disk milliseconds per scenario.
    static std::filesystem::path scratchRoot();

    TempDir tmp{"engine", scratchRoot()};
    std::filesystem::path dataDir = tmp.path();
    /// Where the marker goes when not in `dataDir`.
    std::filesystem::path markerDir;
    const PlatformTexts* words = &macosTexts;
    bool promoteSustainedExtreme = false;
    /// How far the wall clock is set away from the monotonic one (a clock step).
    double wallShift = 0;
    std::shared_ptr<ScriptedSensor> sensor = std::make_shared<ScriptedSensor>();
    std::shared_ptr<RecordingSounder> sounder = std::make_shared<RecordingSounder>();
    ManualQueue queue;
    std::shared_ptr<ScriptedShutdowner> shutdowner = std::make_shared<ScriptedShutdowner>(queue);
    std::vector<std::string> lines;
    /// The engine's settings, made anew by `start`.
    std::shared_ptr<SettingsCache> settingsCache;
    std::unique_ptr<Engine> engine;

  private:
    std::size_t taken_ = 0;
};

/// The engine's first log line for the given settings.
std::string settingsLoadedLine(bool autoShutdown, bool consentRecorded);
/// The engine's thresholds line in the given wording, with the production alerter.
std::string thresholdsLine(const PlatformTexts& words);

}  // namespace velmora::testing
