#pragma once

#include <cstdint>
#include <memory>
#include <optional>
#include <string>

#include "os/file_change_watch.hpp"
#include "os/serial_worker.hpp"
#include "policy/duration.hpp"
#include "store/settings_store.hpp"

namespace velmora {

/// The settings in force, as the cache holds them at one moment.
struct SettingsSnapshot {
    Settings settings;
    /// Why the file could not be used at the latest read (missing, unreadable, not valid,
    /// overruled by an unsaved answer); the settings are then the last good ones.
    std::optional<std::string> problem;
    /// An answer given in this run that is not on disk (yet): it wins over the file.
    bool answerUnsaved = false;
    /// The file has been read at least once; until then the settings are the defaults.
    bool loaded = false;
    /// Grows whenever the settings or the problem change; a reader compares it to skip work.
    std::uint64_t version = 0;
};

/// The last good settings, kept in memory so that the thread that runs the countdown never
/// touches the disk for them. The file is read again off that thread when it changes (a
/// change notification, a slow fallback check); a file that is missing, unreadable or not
/// valid keeps the last good settings. An answer given in this run is in force at once and
/// saved in the background; when it cannot be saved it still holds until the process ends.
class SettingsCache {
  public:
    explicit SettingsCache(SettingsStore store);
    ~SettingsCache();
    SettingsCache(const SettingsCache&) = delete;
    SettingsCache& operator=(const SettingsCache&) = delete;
    SettingsCache(SettingsCache&&) = delete;
    SettingsCache& operator=(SettingsCache&&) = delete;

    [[nodiscard]] const SettingsStore& store() const { return store_; }

    /// Reads the file now, on the background thread, and waits until that is done.
    void refresh();
    /// Starts following the file: a first read in the background, waited for at most
    /// `firstReadWait` (a stalled disk must not hold up the start), then the watch.
    /// Returns false when the first read had not finished in time; its result arrives later.
    bool startWatching(Seconds firstReadWait);

    /// The settings in force; no disk access, any thread.
    [[nodiscard]] SettingsSnapshot snapshot() const;
    /// The snapshot's version alone: a cheap test for news, without copying.
    [[nodiscard]] std::uint64_t version() const;

    /// Puts an answer given in this run in force at once and saves it in the background,
    /// waiting at most `wait`. Returns the save's error, or one saying that the save
    /// is still running; either way the answer holds.
    [[nodiscard]] WriteError keep(const Settings& answer, Seconds wait);

    /// Waits until all background work queued so far is done (tests, quit).
    void settle();

    /// The shared part that background jobs keep alive; defined with the implementation.
    struct State;

  private:
    void requestRead(bool force);

    SettingsStore store_;
    std::shared_ptr<State> state_;
    // Declared in this order so that the watch stops before the worker drains.
    SerialWorker worker_;
    std::unique_ptr<FileChangeWatch> watch_;
};

}  // namespace velmora
