#include "engine/engine_scenario.hpp"

#include <cstdlib>
#include <fstream>
#include <sstream>
#include <stdexcept>

#include "engine/engine_test_access.hpp"
#include "store/settings_store.hpp"

namespace velmora::testing {

namespace {

std::string readText(const std::filesystem::path& path) {
    std::ifstream in(path, std::ios::binary);
    std::ostringstream text;
    text << in.rdbuf();
    return text.str();
}

void writeText(const std::filesystem::path& path, const std::string& text) {
    std::ofstream out(path, std::ios::binary | std::ios::trunc);
    out << text;
}

}  // namespace

std::filesystem::path EngineScenario::scratchRoot() {
    std::error_code ignored;
    if (std::filesystem::is_directory("/dev/shm", ignored)) return "/dev/shm";
    return std::filesystem::temp_directory_path();
}

void EngineScenario::start(double seconds) {
    // The scenario keeps the cache, so that a test can say when the file changed; read once, as
    // the engine would read it without one.
    settingsCache = std::make_shared<SettingsCache>(SettingsStore(dataDir));
    settingsCache->refresh();
    Engine::Parts parts{
        .sensor = sensor,
        .settings = SettingsStore(dataDir),
        .markers = MarkerStore(markerDir.empty() ? dataDir : markerDir),
        .shutdowner = shutdowner,
        .sounder = sounder,
        .alerter = Alerter(promoteSustainedExtreme),
        .log = [this](const std::string& line) { lines.push_back(line); },
        .platformTexts = words,
        .wallClock =
            [this] {
                return Timestamp::fromSeconds(engine->snapshot().lastNow.seconds() + wallShift);
            },
        .settingsCache = settingsCache};
    engine = std::make_unique<Engine>(std::move(parts), at(seconds));
}

void EngineScenario::writeConsent(bool autoShutdown) const {
    const Settings consented{autoShutdown, true, "2027-01-14T09:30:00Z"};
    ASSERT_FALSE(SettingsStore(dataDir).save(consented).has_value());
}

nlohmann::json EngineScenario::tickAt(double seconds) {
    return engine->tick(at(seconds));
}

nlohmann::json EngineScenario::tickThrough(double from, double to, double step) {
    nlohmann::json last;
    for (int i = 0; from + i * step <= to + 1e-9; ++i)
        last = tickAt(from + i * step);
    return last;
}

std::vector<std::string> EngineScenario::takeLines() {
    std::vector<std::string> fresh(lines.begin() + static_cast<std::ptrdiff_t>(taken_),
                                   lines.end());
    taken_ = lines.size();
    return fresh;
}

std::filesystem::path EngineScenario::markerPath() const {
    return dataDir / "auto-shutdown.marker";
}

std::filesystem::path EngineScenario::settingsPath() const {
    return dataDir / "settings.json";
}

void EngineScenario::settleFiles() const {
    if (!engine) return;
    EngineTestAccess::settleMarkers(*engine);
    settingsCache->settle();
}

bool EngineScenario::markerExists() const {
    settleFiles();
    return std::filesystem::exists(markerPath());
}

std::string EngineScenario::markerText() const {
    settleFiles();
    return readText(markerPath());
}

nlohmann::json EngineScenario::markerJson() const {
    return nlohmann::json::parse(markerText());
}

nlohmann::json EngineScenario::settingsJson() const {
    settleFiles();
    return nlohmann::json::parse(readText(settingsPath()));
}

void EngineScenario::writeMarkerText(const std::string& text) const {
    writeText(markerPath(), text);
}

void EngineScenario::writeSettingsText(const std::string& text) const {
    writeText(settingsPath(), text);
}

void EngineScenario::settingsFileChanged() const {
    settingsCache->refresh();
}

void EngineScenario::withdrawConsent() const {
    writeSettingsText(R"({"autoShutdown": true, "consentRecorded": false})");
    settingsFileChanged();
}

std::string EngineScenario::stateLine(const std::string& from, const std::string& to,
                                      const std::string& details) {
    return "stage-c: state " + from + " -> " + to + " (" + details + ")";
}

std::string settingsLoadedLine(bool autoShutdown, bool consentRecorded) {
    auto text = [](bool b) { return b ? std::string("true") : std::string("false"); };
    return "stage-c: settings loaded: autoShutdown=" + text(autoShutdown) +
           " consentRecorded=" + text(consentRecorded) +
           " enabled=" + text(autoShutdown && consentRecorded);
}

std::string thresholdsLine(const PlatformTexts& words) {
    return "stage-c: thresholds: stageA=95C stageB=100C (countdown starts immediately at B; "
           "timed A->B promotion OFF: only the OS critical state reaches B) countdown=10s "
           "grace=300s; shutdown runs at the END of the countdown (" +
           std::string(words.shutdownMechanism) + ")";
}

}  // namespace velmora::testing
