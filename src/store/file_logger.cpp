#include "store/file_logger.hpp"

#include "os/unique_fd.hpp"
#include "os/whole_file.hpp"
#include "policy/timestamp.hpp"
#include "store/log_time.hpp"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <system_error>

namespace velmora {

namespace {

constexpr off_t sizeLimit = 1'000'000;

// The only size limit: checked once per launch, the whole history goes rather than rotating.
void discardOversizedLog(const std::filesystem::path& url) {
    struct stat info {};
    if (::stat(url.c_str(), &info) == 0 && info.st_size > sizeLimit) {
        static_cast<void>(::unlink(url.c_str()));
    }
}

// Appends to the log, creating it when missing; a failure drops the entry. One open with
// O_CREAT rather than "open, else write a new file": the effect is the same, and a log that
// exists but failed to open once is never truncated.
void appendEntry(const std::filesystem::path& url, std::string_view entry) {
    const UniqueFd fd(::open(url.c_str(), O_WRONLY | O_APPEND | O_CREAT | O_CLOEXEC, 0666));
    if (fd.valid()) static_cast<void>(writeAll(fd.get(), entry));
}

}  // namespace

FileLogger::FileLogger(const std::filesystem::path& dir) : url_(dir / "heat.log") {
    std::error_code ignored;
    std::filesystem::create_directories(dir, ignored);
    discardOversizedLog(url_);
    try {
        writer_ = std::thread([this] { run(); });
    } catch (const std::system_error&) {
        // No writer thread: log() then writes on the caller's thread rather than losing lines.
    }
}

FileLogger::~FileLogger() {
    {
        const std::lock_guard lock(mutex_);
        stopping_ = true;
    }
    wake_.notify_one();
    if (writer_.joinable()) writer_.join();
}

void FileLogger::log(std::string_view line) {
    if (mirror_) mirror_(std::string(line));
    std::string entry = formatLogTime(Timestamp::now());
    entry.reserve(entry.size() + line.size() + 2);
    entry += ' ';
    entry += line;
    entry += '\n';
    if (!writer_.joinable()) {
        appendEntry(url_, entry);
        return;
    }
    {
        const std::lock_guard lock(mutex_);
        queue_.push_back(std::move(entry));
        ++queued_;
    }
    wake_.notify_one();
}

void FileLogger::drain() {
    std::unique_lock lock(mutex_);
    const auto target = queued_;
    written_cv_.wait(lock, [&] { return written_ >= target; });
}

void FileLogger::run() {
    std::unique_lock lock(mutex_);
    for (;;) {
        wake_.wait(lock, [this] { return stopping_ || !queue_.empty(); });
        if (queue_.empty()) return;  // stopping, and everything is written
        const std::string entry = std::move(queue_.front());
        queue_.pop_front();
        lock.unlock();
        appendEntry(url_, entry);
        lock.lock();
        ++written_;
        written_cv_.notify_all();
    }
}

}  // namespace velmora
