#pragma once

#include <sys/types.h>

#include <condition_variable>
#include <cstdint>
#include <deque>
#include <filesystem>
#include <functional>
#include <mutex>
#include <string>
#include <string_view>
#include <thread>

namespace velmora {

/// Appends timestamped lines to "heat.log" in the data directory without ever blocking or
/// failing the caller. One writer thread takes entries in the order they were logged; the file
/// is opened and closed for each, so a crash loses only what is still queued.
///
/// The log keeps its story: once it has reached sizeLimit it is renamed to "heat.log.1"
/// (replacing the generation before) and a new one begins, at launch (before the first line, so
/// the new log starts with the launch) and during the run alike; a log begun during the run
/// starts with a line saying that it continues "heat.log.1".
/// Every line is escaped so that no outside text can start a line of its own; the file is
/// never reached through a symbolic link; a deleted data directory is created again; and lines
/// that cannot be written (a full disk, a file-size limit) are counted and reported in the
/// first line that can.
class FileLogger {
  public:
    static constexpr off_t sizeLimit = 1'000'000;

    /// Creates `dir` if needed and rotates a log of sizeLimit or more. Never fails: an
    /// unusable directory only means that entries are dropped.
    explicit FileLogger(const std::filesystem::path& dir);
    /// Writes every entry still queued, then stops the writer.
    ~FileLogger();

    FileLogger(const FileLogger&) = delete;
    FileLogger& operator=(const FileLogger&) = delete;
    FileLogger(FileLogger&&) = delete;
    FileLogger& operator=(FileLogger&&) = delete;

    [[nodiscard]] const std::filesystem::path& url() const { return url_; }
    /// Where the previous generation goes: "heat.log.1".
    [[nodiscard]] const std::filesystem::path& previousUrl() const { return previousUrl_; }

    /// Stamps `line` with the current local time on the calling thread, escapes its control
    /// characters and queues it. Any thread; returns at once.
    void log(std::string_view line);

    /// Blocks until every entry logged before this call has been written (or dropped).
    void drain();

    /// Also hands every later line, unstamped, to `mirror` on the logging thread (the system
    /// journal). Set before the logger is shared with other threads.
    void setMirror(std::function<void(const std::string&)> mirror) { mirror_ = std::move(mirror); }

  private:
    void run();
    /// Appends one entry; only ever runs on one thread at a time.
    void write(const std::string& entry);

    std::filesystem::path dir_;
    std::filesystem::path url_;
    std::filesystem::path previousUrl_;
    std::mutex mutex_;
    std::condition_variable wake_;
    std::condition_variable written_cv_;
    std::deque<std::string> queue_;
    std::uint64_t queued_ = 0;   // entries ever queued
    std::uint64_t written_ = 0;  // entries ever taken off the queue and written or dropped
    bool stopping_ = false;
    std::mutex writeMutex_;      // serialises write() when there is no writer thread
    std::uint64_t dropped_ = 0;  // entries lost since the last one written
    int lastDropError_ = 0;      // the errno that lost the last of them
    std::thread writer_;
    std::function<void(const std::string&)> mirror_;
};

}  // namespace velmora
