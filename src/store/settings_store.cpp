#include "store/settings_store.hpp"

#include "os/whole_file.hpp"
#include "store/dates.hpp"
#include "store/disk_writes.hpp"

namespace velmora {

namespace {

std::optional<Settings> readSettings(const std::filesystem::path& url) {
    const auto text = readWholeFile(url);
    if (!text) return std::nullopt;
    return decodeSettings(*text);
}

}  // namespace

SettingsStore::SettingsStore(const std::filesystem::path& dir) : url_(dir / "settings.json") {}

Settings SettingsStore::load() const {
    return tryLoad().value_or(Settings{});
}

std::optional<Settings> SettingsStore::tryLoad() const {
    return readSettings(url_);
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
    const auto old = readSettings(url_);
    Settings settings{on, true, rfc3339(now)};
    if (old && old->consentRecorded) settings.consentAt = old->consentAt;
    if (auto error = save(settings)) return *error;
    return settings;
}

}  // namespace velmora
