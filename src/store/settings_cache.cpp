#include "store/settings_cache.hpp"

#include <sys/stat.h>

#include <atomic>
#include <cerrno>
#include <chrono>
#include <cmath>
#include <mutex>
#include <system_error>

namespace velmora {

namespace {

/// What tells a changed file from the same one without reading it.
struct FileIdentity {
    dev_t device = 0;
    ino_t inode = 0;
    off_t size = 0;
    struct timespec modified {};
    struct timespec changed {};

    bool operator==(const FileIdentity& other) const {
        return device == other.device && inode == other.inode && size == other.size &&
               modified.tv_sec == other.modified.tv_sec &&
               modified.tv_nsec == other.modified.tv_nsec &&
               changed.tv_sec == other.changed.tv_sec && changed.tv_nsec == other.changed.tv_nsec;
    }
};

FileIdentity identityOf(const struct stat& info) {
#ifdef __APPLE__
    return {info.st_dev, info.st_ino, info.st_size, info.st_mtimespec, info.st_ctimespec};
#else
    return {info.st_dev, info.st_ino, info.st_size, info.st_mtim, info.st_ctim};
#endif
}

std::string secondsText(Seconds span) {
    const auto tenths = std::lround(span.count() * 10);
    return std::to_string(tenths / 10) +
           (tenths % 10 != 0 ? "." + std::to_string(tenths % 10) : "");
}

constexpr const char* kOverruled = "holds other settings than this run's unsaved answer";

}  // namespace

struct SettingsCache::State {
    mutable std::mutex mutex;
    SettingsSnapshot snapshot;
    std::optional<Settings> unsaved;  // this run's answer while it is not on disk
    int savesRunning = 0;             // a read meanwhile may see the file before the save

    // Only the worker touches these.
    std::optional<FileIdentity> seen;
    bool lastReadGood = false;
    bool everRead = false;

    /// One look at the file. Without `force`, a file that looks the same as at the last good
    /// read is not read again: the fallback then costs one stat.
    void readOnce(const SettingsStore& store, bool force);

    std::atomic<bool> readQueued{false};
    std::atomic<bool> forceQueued{false};

    /// Publishes the outcome of a read: good settings, or why there are none.
    void publish(const std::optional<Settings>& read, const std::optional<std::string>& problem) {
        const std::lock_guard lock(mutex);
        SettingsSnapshot next = snapshot;
        next.loaded = true;
        if (read && unsaved) {
            if (*read == *unsaved) {
                unsaved.reset();  // the answer reached the disk after all
                next.problem.reset();
            } else if (savesRunning == 0) {
                next.problem = kOverruled;
            }
        } else if (read) {
            next.settings = *read;
            next.problem.reset();
        } else {
            next.problem = problem;
        }
        next.answerUnsaved = unsaved.has_value();
        replace(next);
    }

    /// Puts `next` in place, counting a version only for a real change. Under `mutex`.
    void replace(SettingsSnapshot next) {
        if (next.settings == snapshot.settings && next.problem == snapshot.problem &&
            next.answerUnsaved == snapshot.answerUnsaved && next.loaded == snapshot.loaded) {
            return;
        }
        next.version = snapshot.version + 1;
        snapshot = std::move(next);
    }
};

SettingsCache::SettingsCache(SettingsStore store)
    : store_(std::move(store)), state_(std::make_shared<State>()) {}

SettingsCache::~SettingsCache() {
    watch_.reset();  // no new reads once the worker starts draining
}

void SettingsCache::refresh() {
    worker_.submit([state = state_, store = store_] { state->readOnce(store, true); }).wait();
}

bool SettingsCache::startWatching(Seconds firstReadWait) {
    auto first = worker_.submit([state = state_, store = store_] { state->readOnce(store, true); });
    const bool inTime = first.wait_for(firstReadWait) == std::future_status::ready;
    watch_ = std::make_unique<FileChangeWatch>(store_.url(),
                                               [this](bool notified) { requestRead(notified); });
    return inTime;
}

void SettingsCache::requestRead(bool force) {
    if (force) state_->forceQueued = true;
    if (state_->readQueued.exchange(true)) return;  // one queued read covers them all
    worker_.post([state = state_, store = store_] {
        state->readQueued = false;
        state->readOnce(store, state->forceQueued.exchange(false));
    });
}

SettingsSnapshot SettingsCache::snapshot() const {
    const std::lock_guard lock(state_->mutex);
    return state_->snapshot;
}

std::uint64_t SettingsCache::version() const {
    const std::lock_guard lock(state_->mutex);
    return state_->snapshot.version;
}

WriteError SettingsCache::keep(const Settings& answer, Seconds wait) {
    {
        const std::lock_guard lock(state_->mutex);
        state_->unsaved = answer;
        ++state_->savesRunning;
        SettingsSnapshot next = state_->snapshot;
        next.settings = answer;
        next.answerUnsaved = true;
        state_->replace(next);
    }
    auto saved = worker_.submit([state = state_, store = store_, answer]() -> WriteError {
        auto error = store.save(answer);
        const std::lock_guard lock(state->mutex);
        --state->savesRunning;
        if (error) return error;
        if (state->unsaved == answer) {
            state->unsaved.reset();
            SettingsSnapshot next = state->snapshot;
            next.answerUnsaved = false;
            state->replace(next);
        }
        return std::nullopt;
    });
    if (saved.wait_for(wait) != std::future_status::ready) {
        return StoreError{0, "saving " + store_.url().string() + " did not finish within " +
                                 secondsText(wait) + " s; it goes on in the background"};
    }
    return saved.get();
}

void SettingsCache::settle() {
    worker_.settle();
}

void SettingsCache::State::readOnce(const SettingsStore& store, bool force) {
    struct stat info {};
    const bool exists = ::stat(store.url().c_str(), &info) == 0;
    const int err = errno;
    const std::optional<FileIdentity> identity =
        exists ? std::optional(identityOf(info)) : std::nullopt;
    if (!force && lastReadGood && identity == seen) return;
    seen = identity;
    const bool firstRead = !everRead;
    everRead = true;
    std::optional<Settings> read;
    std::optional<std::string> problem;
    if (!exists && err == ENOENT && firstRead) {
        read = Settings{};  // a fresh install: the defaults are the good settings
    } else if (!exists && err == ENOENT) {
        problem = "is missing";
    } else if (!exists) {
        problem =
            "cannot be checked (" + std::error_code(err, std::generic_category()).message() + ")";
    } else {
        read = store.tryLoad();
        if (!read) problem = "could not be read or does not hold valid settings";
    }
    lastReadGood = read.has_value();
    publish(read, problem);
}

}  // namespace velmora
