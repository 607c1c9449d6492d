#pragma once

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
class FileLogger {
  public:
    /// Creates `dir` if needed and, once per launch, deletes a log larger than 1,000,000 bytes.
    /// Never fails: an unusable directory only means that entries are dropped.
    explicit FileLogger(const std::filesystem::path& dir);
    /// Writes every entry still queued, then stops the writer.
    ~FileLogger();

    FileLogger(const FileLogger&) = delete;
    FileLogger& operator=(const FileLogger&) = delete;
    FileLogger(FileLogger&&) = delete;
    FileLogger& operator=(FileLogger&&) = delete;

    [[nodiscard]] const std::filesystem::path& url() const { return url_; }

    /// Stamps `line` with the current local time on the calling thread and queues it.
    /// Any thread; returns at once.
    void log(std::string_view line);

    /// Blocks until every entry logged before this call has been written (or dropped).
    void drain();

    /// Also hands every later line, unstamped, to `mirror` on the logging thread (the system
    /// journal). Set before the logger is shared with other threads.
    void setMirror(std::function<void(const std::string&)> mirror) { mirror_ = std::move(mirror); }

  private:
    void run();

    std::filesystem::path url_;
    std::mutex mutex_;
    std::condition_variable wake_;
    std::condition_variable written_cv_;
    std::deque<std::string> queue_;
    std::uint64_t queued_ = 0;   // entries ever queued
    std::uint64_t written_ = 0;  // entries ever taken off the queue and written or dropped
    bool stopping_ = false;
    std::thread writer_;
    std::function<void(const std::string&)> mirror_;
};

}  // namespace velmora
