#include "store/settings_store.hpp"

#include "os/safe_read.hpp"
#include "store/dates.hpp"
#include "store/disk_writes.hpp"

namespace velmora {

SettingsStore::SettingsStore(const std::filesystem::path& dir, LogSink report)
    : url_(dir / "settings.json"), report_(std::move(report)) {}

std::optional<Settings> SettingsStore::readSettings() const {
    const auto found = readCappedRegularFile(url_, readCap);
    if (found.kind == CappedRead::Kind::missing) {
        noteProblem({});
        return std::nullopt;
    }
    if (found.kind != CappedRead::Kind::ok) {
        noteProblem(found.problem);
        return std::nullopt;
    }
    auto settings = decodeSettings(found.text);
    noteProblem(settings ? std::string() : std::string("does not hold valid settings"));
    return settings;
}

void SettingsStore::noteProblem(const std::string& problem) const {
    if (problem == *reported_) return;
    *reported_ = problem;
    if (!problem.empty() && report_) {
        report_("settings: " + url_.string() + " " + problem + "; not used");
    }
}

Settings SettingsStore::load() const {
    return tryLoad().value_or(Settings{});
}

std::optional<Settings> SettingsStore::tryLoad() const {
    return readSettings();
}

WriteError SettingsStore::save(const Settings& settings) const {
    if (auto error = createDirectories(url_.parent_path())) return error;
    const auto json = encodeSettings(settings);
    if (!json) return json.error();
    return replaceFileAtomically(url_, *json);
}

StoreResult<Settings> SettingsStore::recordConsent(bool on, Timestamp now) const {
    // The old file cannot change the answer, so it is not read.
    Settings settings{on, true, rfc3339(now)};
    if (auto error = save(settings)) return *error;
    return settings;
}

StoreResult<Settings> SettingsStore::setAutoShutdown(bool on, Timestamp now) const {
    const auto old = readSettings();
    Settings settings{on, true, rfc3339(now)};
    if (old && old->consentRecorded) settings.consentAt = old->consentAt;
    if (auto error = save(settings)) return *error;
    return settings;
}

}  // namespace velmora
