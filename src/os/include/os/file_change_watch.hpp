#pragma once

#include <atomic>
#include <chrono>
#include <cstdint>
#include <filesystem>
#include <functional>
#include <thread>

#include "os/unique_fd.hpp"

namespace velmora {

/// Tells when one file may have changed: at once through a change notification of its
/// directory (inotify on Linux), and every few seconds as a fallback for file systems and
/// moments without notifications (no watch, the directory deleted and made again).
/// `changed` runs on the watch's own thread; `notified` is true for a notification and false
/// for the fallback. The watch itself never reads the file.
class FileChangeWatch {
  public:
    struct Intervals {
        // Fractional seconds; the os layer sits below policy's `Seconds` alias.
        std::chrono::duration<double> watched = std::chrono::seconds(30);   // notifications work
        std::chrono::duration<double> unwatched = std::chrono::seconds(5);  // without them
    };

    FileChangeWatch(std::filesystem::path file, std::function<void(bool notified)> changed,
                    Intervals intervals);
    FileChangeWatch(std::filesystem::path file, std::function<void(bool notified)> changed)
        : FileChangeWatch(std::move(file), std::move(changed), Intervals{}) {}
    /// Stops the thread; never waits on the disk.
    ~FileChangeWatch();
    FileChangeWatch(const FileChangeWatch&) = delete;
    FileChangeWatch& operator=(const FileChangeWatch&) = delete;
    FileChangeWatch(FileChangeWatch&&) = delete;
    FileChangeWatch& operator=(FileChangeWatch&&) = delete;

    /// Whether a change notification is in place right now (false between a deleted directory
    /// and the fallback that finds it again, and on systems without notifications).
    [[nodiscard]] bool notifying() const { return watching_.load(); }
    /// How often the thread has woken: by an event, however irrelevant, or for the fallback.
    [[nodiscard]] std::uint64_t wakeups() const { return wakeups_.load(); }

  private:
    void run();
    bool addWatch();
    bool readEvents();
    void watchFile();

    std::filesystem::path file_;
    std::function<void(bool)> changed_;
    Intervals intervals_;
    UniqueFd notify_;
    UniqueFd stopRead_;
    UniqueFd stopWrite_;
    int watch_ = -1;
    int fileWatch_ = -1;
    std::atomic<bool> watching_{false};
    std::atomic<std::uint64_t> wakeups_{0};
    std::thread thread_;
};

}  // namespace velmora
