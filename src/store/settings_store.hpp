#pragma once

#include "policy/timestamp.hpp"
#include "store/settings.hpp"
#include "store/store_error.hpp"

#include <filesystem>
#include <optional>

namespace velmora {

/// "settings.json" in the data directory. Holds only the location: every call goes to disk.
class SettingsStore {
  public:
    /// Touches nothing on disk.
    explicit SettingsStore(const std::filesystem::path& dir);

    [[nodiscard]] const std::filesystem::path& url() const { return url_; }

    /// The stored settings, or the defaults when the file is missing, unreadable or not valid.
    [[nodiscard]] Settings load() const;

    /// The stored settings, or nothing when the file is missing, unreadable or not valid: for
    /// a reader that keeps the last good settings instead of falling back to the defaults.
    [[nodiscard]] std::optional<Settings> tryLoad() const;

    /// Creates the directory if needed, then replaces the file atomically (temporary file in
    /// the same directory, then rename). After a failure the old file is untouched.
    [[nodiscard]] WriteError save(const Settings& settings) const;

    /// The consent dialog's answer: consent recorded now, whatever the old file said.
    [[nodiscard]] StoreResult<Settings> recordConsent(bool on, Timestamp now) const;

    /// The settings switch. Counts as consent; keeps the first consent time when one was
    /// already recorded, otherwise records `now`.
    [[nodiscard]] StoreResult<Settings> setAutoShutdown(bool on, Timestamp now) const;

  private:
    std::filesystem::path url_;
};

}  // namespace velmora
