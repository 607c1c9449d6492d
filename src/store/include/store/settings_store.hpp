#pragma once

#include "policy/sinks.hpp"
#include "policy/timestamp.hpp"
#include "store/settings.hpp"
#include "store/store_error.hpp"

#include <cstddef>
#include <filesystem>
#include <memory>
#include <optional>
#include <string>

namespace velmora {

/// "settings.json" in the data directory. Holds only the location: every call goes to disk.
class SettingsStore {
  public:
    /// The largest settings file read; a real one is about 100 bytes.
    static constexpr std::size_t readCap = std::size_t{64} * 1024;

    /// Touches nothing on disk. `report`, when given, hears once about a settings file that
    /// cannot be used (see load), and again only after it was usable in between.
    explicit SettingsStore(const std::filesystem::path& dir, LogSink report = {});

    [[nodiscard]] const std::filesystem::path& url() const { return url_; }

    /// The stored settings, or the defaults when the file is missing, unreadable or not valid.
    /// A symbolic link, a FIFO, a device or a file larger than readCap counts as unreadable and
    /// is never followed, waited on or read whole. One open/read/close and a small parse.
    [[nodiscard]] Settings load() const;

    /// The stored settings, or nothing when the file is missing, unreadable or not valid: for
    /// a reader that keeps the last good settings instead of falling back to the defaults.
    [[nodiscard]] std::optional<Settings> tryLoad() const;

    /// Creates the directory if needed, then replaces the file atomically and durably
    /// (temporary file in the same directory, fsync, rename, directory fsync). After a failure
    /// the old file is untouched.
    [[nodiscard]] WriteError save(const Settings& settings) const;

    /// The consent dialog's answer: consent recorded now, whatever the old file said.
    [[nodiscard]] StoreResult<Settings> recordConsent(bool on, Timestamp now) const;

    /// The settings switch. Counts as consent; keeps the first consent time when one was
    /// already recorded, otherwise records `now`.
    [[nodiscard]] StoreResult<Settings> setAutoShutdown(bool on, Timestamp now) const;

  private:
    [[nodiscard]] std::optional<Settings> readSettings() const;
    void noteProblem(const std::string& problem) const;

    std::filesystem::path url_;
    LogSink report_;
    /// The problem last reported, shared by copies so that a copied store does not repeat it.
    std::shared_ptr<std::string> reported_ = std::make_shared<std::string>();
};

}  // namespace velmora
